// The credential in a response, the session file, and the texts around them.
#include "src/account/panel_session.h"

#include <string>
#include <utility>

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

class Credential : public sim::MachineTest {
 protected:
  static std::wstring In(const std::string& response) {
    std::wstring authData = L"earlier";
    const bool found = ExtractAuthData(response, authData);
    EXPECT_EQ(found, !authData.empty());
    return authData;
  }
};

TEST_F(Credential, StandsInTheDataObject) {
  EXPECT_EQ(In(R"({"data":{"auth_data":"Bearer abc"}})"), L"Bearer abc");
  EXPECT_EQ(In(R"({"data":{"token":"t"}})"), L"t");
}

TEST_F(Credential, OrAtTheTopLevel) {
  EXPECT_EQ(In(R"({"auth_data":"Bearer abc"})"), L"Bearer abc");
  EXPECT_EQ(In(R"({"token":"t"})"), L"t");
  EXPECT_EQ(In(R"({"data":{"is_admin":0},"auth_data":"a"})"), L"a");
  EXPECT_EQ(In(R"({"data":{"is_admin":0},"token":"t"})"), L"t");
}

TEST_F(Credential, TheFirstThatIsNotEmptyOfFourPlacesCounts) {
  EXPECT_EQ(In(R"({"auth_data":"3","token":"4","data":{"token":"2","auth_data":"1"}})"), L"1");
  EXPECT_EQ(In(R"({"auth_data":"3","token":"4","data":{"token":"2","auth_data":""}})"), L"2");
  EXPECT_EQ(In(R"({"auth_data":"3","token":"4","data":{"token":"","auth_data":""}})"), L"3");
  EXPECT_EQ(In(R"({"token":"4","data":{"a":1}})"), L"4");
}

// The first "auth_data" of the whole text hides a later one.
TEST_F(Credential, AnEmptyOneInFrontHidesAFullOneBehindIt) {
  EXPECT_EQ(In(R"({"data":{"auth_data":""},"auth_data":"3"})"), L"");
}

TEST_F(Credential, APanelsOrdinaryReplyGivesTheCredentialAndNotTheSubscriptionToken) {
  EXPECT_EQ(In(R"({"status":"success","message":"\u64cd\u4f5c\u6210\u529f","data":{"token":"sub",)"
               R"("auth_data":"Bearer 12|AbC\/d","is_admin":false},"error":null})"),
            L"Bearer 12|AbC/d");
}

TEST_F(Credential, AnythingElseIsNoneAndEmptiesTheOutput) {
  for (const char* response : {"", "<html></html>", R"({"data":true})", R"({"data":null})",
                               R"({"auth_data":null,"token":7})", R"({"message":"no"})"}) {
    EXPECT_EQ(In(response), L"") << response;
  }
}

class SessionFile : public sim::MachineTest {
 protected:
  void SetUp() override { machine.files.PutDirectory(L"C:\\run"); }
  const std::wstring path = L"C:\\run\\session.json";
  std::wstring error = L"earlier";
};

TEST_F(SessionFile, IsOneLineOfUtf8) {
  EXPECT_TRUE(SaveSession(path, L"用户@example.com", L"Bearer abc", error));
  EXPECT_EQ(machine.files.Read(path),
            "{\"email\":\"用户@example.com\",\"auth_data\":\"Bearer abc\"}\n");
  EXPECT_EQ(error, L"earlier");
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"),
            std::vector<std::string>{R"("C:\run\session.json", "wb", 64)"});
}

TEST_F(SessionFile, ReplacesWhatWasThere) {
  machine.files.Put(path, std::string(500, 'x'));
  EXPECT_TRUE(SaveSession(path, L"a", L"b", error));
  EXPECT_EQ(machine.files.Read(path), "{\"email\":\"a\",\"auth_data\":\"b\"}\n");
}

TEST_F(SessionFile, ValuesAreNotEscaped) {
  EXPECT_TRUE(SaveSession(path, L"a\"b\\c", L"d\ne", error));
  EXPECT_EQ(machine.files.Read(path), "{\"email\":\"a\"b\\c\",\"auth_data\":\"d\ne\"}\n");
}

TEST_F(SessionFile, MayHoldEmptyValues) {
  EXPECT_TRUE(SaveSession(path, L"", L"", error));
  EXPECT_EQ(machine.files.Read(path), "{\"email\":\"\",\"auth_data\":\"\"}\n");
}

TEST_F(SessionFile, ThatCanNotBeOpenedIsAFailure) {
  machine.files.Put(path, "old");
  machine.files.SetReadOnly(path, true);
  EXPECT_FALSE(SaveSession(path, L"a", L"b", error));
  EXPECT_EQ(error, L"无法保存登录状态");
  EXPECT_EQ(machine.files.Read(path), "old");
  EXPECT_FALSE(SaveSession(L"C:\\missing\\session.json", L"a", L"b", error));
}

TEST_F(SessionFile, ThatCanNotBeWrittenIsNone) {
  machine.files.Put(path, "");
  machine.files.SetWritesFail(path, true);
  EXPECT_TRUE(SaveSession(path, L"a", L"b", error));
  EXPECT_EQ(error, L"earlier");
}

TEST(UrlEncode, LeavesLettersDigitsAndFourMarks) {
  EXPECT_EQ(UrlEncode("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._@"),
            "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._@");
}

TEST(UrlEncode, EncodesEveryOtherByteInUpperCase) {
  EXPECT_EQ(UrlEncode(" !\"#$%&'()*+,/"), "%20%21%22%23%24%25%26%27%28%29%2A%2B%2C%2F");
  EXPECT_EQ(UrlEncode(":;<=>?[\\]^`{|}~"), "%3A%3B%3C%3D%3E%3F%5B%5C%5D%5E%60%7B%7C%7D%7E");
  EXPECT_EQ(UrlEncode("\xE4\xB8\xAD\xFF\x01"), "%E4%B8%AD%FF%01");
  EXPECT_EQ(UrlEncode(std::string("a\0b", 3)), "a%00b");
  EXPECT_EQ(UrlEncode("\x7F\x80"), "%7F%80");
}

TEST(UrlEncode, NothingStaysNothing) {
  EXPECT_EQ(UrlEncode(""), "");
}

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
    std::wstring error = L"earlier";
    PreferPanelMessage(response, error);
    return error;
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
