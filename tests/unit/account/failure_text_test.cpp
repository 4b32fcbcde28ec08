#include "src/account/failure_text.h"

#include <string>

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

TEST(PanelErrorWithDetail, AddsStepAndStatusInFullWidthBrackets) {
  EXPECT_EQ(PanelErrorWithDetail(L"不行", L"LOGIN", 401), L"不行（LOGIN 401）");
  EXPECT_EQ(PanelErrorWithDetail(L"不行", L"REG", 12029), L"不行（REG 12029）");
  EXPECT_EQ(PanelErrorWithDetail(L"不行", L"CFG", 4294967295), L"不行（CFG 4294967295）");
}

TEST(PanelErrorWithDetail, WithoutAStatusTheStepStandsAlone) {
  EXPECT_EQ(PanelErrorWithDetail(L"密码已重置，请用新密码登录", L"RESET", 0),
            L"密码已重置，请用新密码登录（RESET）");
}

TEST(PanelErrorWithDetail, AnEmptyTextBecomesAGeneralOne) {
  EXPECT_EQ(PanelErrorWithDetail(L"", L"SEND", 500), L"请求失败（SEND 500）");
}

class PanelMessage : public sim::MachineTest {
 protected:
  static std::wstring Preferred(const std::string& response) {
    return FirstText({MessageIn(response), L"earlier"});
  }
};

TEST_F(PanelMessage, ReplacesTheError) {
  EXPECT_EQ(Preferred(R"({"status":"fail","message":"\u90ae\u7bb1\u6216\u5bc6\u7801\u9519\u8bef",)"
                      R"("data":null,"error":null})"),
            L"邮箱或密码错误");
}

TEST_F(PanelMessage, OfAPrettyPrintedReplyIsFound) {
  EXPECT_EQ(Preferred("{\n    \"message\": \"\\u4e0d\\u884c/x\"\n}"), L"不行/x");
}

TEST_F(PanelMessage, ThatIsEmptyOrNoTextChangesNothing) {
  for (const char* response : {"", "<html>", R"({"message":""})", R"({"message":null})",
                               R"({"message":7})", R"({"Message":"no"})"}) {
    EXPECT_EQ(Preferred(response), L"earlier") << response;
  }
}

}  // namespace
}  // namespace vpn
