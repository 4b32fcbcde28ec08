// The credential in a response and in the credential file.
#include "src/account/credential.h"

#include <string>
#include <utility>

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

class Credential : public sim::MachineTest {
 protected:
  static std::wstring In(const std::string& response) {
    return ExtractAuthData({.body = response});
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
};

TEST_F(SessionFile, IsOneLineOfUtf8) {
  EXPECT_TRUE(SaveCredential(path, L"用户@example.com", L"Bearer abc"));
  EXPECT_EQ(machine.files.Read(path),
            "{\"email\":\"用户@example.com\",\"auth_data\":\"Bearer abc\"}\n");
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"),
            std::vector<std::string>{R"("C:\run\session.json", "wb", 64)"});
}

TEST_F(SessionFile, ReplacesWhatWasThere) {
  machine.files.Put(path, std::string(500, 'x'));
  EXPECT_TRUE(SaveCredential(path, L"a", L"b"));
  EXPECT_EQ(machine.files.Read(path), "{\"email\":\"a\",\"auth_data\":\"b\"}\n");
}

TEST_F(SessionFile, ValuesAreNotEscaped) {
  EXPECT_TRUE(SaveCredential(path, L"a\"b\\c", L"d\ne"));
  EXPECT_EQ(machine.files.Read(path), "{\"email\":\"a\"b\\c\",\"auth_data\":\"d\ne\"}\n");
}

TEST_F(SessionFile, MayHoldEmptyValues) {
  EXPECT_TRUE(SaveCredential(path, L"", L""));
  EXPECT_EQ(machine.files.Read(path), "{\"email\":\"\",\"auth_data\":\"\"}\n");
}

TEST_F(SessionFile, ThatCanNotBeOpenedIsAFailure) {
  machine.files.Put(path, "old");
  machine.files.SetReadOnly(path, true);
  EXPECT_EQ(SaveCredential(path, L"a", L"b").text(), L"无法保存登录状态");
  EXPECT_EQ(machine.files.Read(path), "old");
  EXPECT_FALSE(SaveCredential(L"C:\\missing\\session.json", L"a", L"b"));
}

TEST_F(SessionFile, ThatCanNotBeWrittenIsNone) {
  machine.files.Put(path, "");
  machine.files.SetWritesFail(path, true);
  EXPECT_TRUE(SaveCredential(path, L"a", L"b"));
}

}  // namespace
}  // namespace vpn
