// Registering, which ends signed in if at all possible.
#include <string>

#include "tests/unit/account/xboard_test.h"

namespace vpn {
namespace {

class Register : public XboardTest {
 protected:
  bool Try(const wchar_t* inviteCode = L"", const wchar_t* emailCode = L"") {
    return panel().registerAccount(L"new@example.com", L"secret", inviteCode, emailCode, error);
  }
  void OnLogin(sim::HttpAnswer first, sim::HttpAnswer second) {
    OnPost(kLogin, std::move(first));
    OnPost(kLogin, std::move(second));
  }
  // After this answer neither form of the login works.
  void ExpectFailure(sim::HttpAnswer answer, const wchar_t* text) {
    OnPost(kPath, std::move(answer));
    OnLogin(Refusal(422, R"({"message":"first login"})"),
            Refusal(422, R"({"message":"second login"})"));
    EXPECT_FALSE(Try());
    EXPECT_EQ(error, text);
    EXPECT_EQ(Read<AuthData>(panel()), L"");
  }

  const std::string kPath = "passport/auth/register";
  const std::string kLogin = "passport/auth/login";
  const std::string kCredential = R"({"data":{"token":"sub","auth_data":"Bearer new"}})";
  const std::string kBody = R"({"email":"new@example.com","password":"secret"})";
};

TEST_F(Register, TakesTheCredentialOfTheReplyAndSavesIt) {
  OnPost(kPath, kCredential);
  error = L"earlier";
  EXPECT_TRUE(Try());
  EXPECT_EQ(Sent(), Texts{PlainPost(kPath, kBody)});
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer new");
  EXPECT_EQ(Read<Email>(panel()), L"new@example.com");
  EXPECT_EQ(machine.files.Read(sessionPath),
            "{\"email\":\"new@example.com\",\"auth_data\":\"Bearer new\"}\n");
  EXPECT_EQ(error, L"earlier");
}

TEST_F(Register, SendsTheCodesThatAreGivenAndNoOthers) {
  const std::string start = R"({"email":"new@example.com","password":"secret")";
  for (int i = 0; i < 4; ++i) {
    OnPost(kPath, kCredential);
  }
  EXPECT_TRUE(Try(L"", L""));
  EXPECT_TRUE(Try(L"inv", L""));
  EXPECT_TRUE(Try(L"", L"123456"));
  EXPECT_TRUE(Try(L"i\"v", L"1\\2"));
  EXPECT_EQ(
      Sent(),
      (Texts{PlainPost(kPath, start + "}"), PlainPost(kPath, start + R"(,"invite_code":"inv"})"),
             PlainPost(kPath, start + R"(,"email_code":"123456"})"),
             PlainPost(kPath, start + R"(,"invite_code":"i\"v","email_code":"1\\2"})")}));
}

// Control bytes other than the line feed are not escaped; a panel then drops the whole body.
TEST_F(Register, EscapesAddressAndPasswordButNoTab) {
  OnPost(kPath, kCredential);
  EXPECT_TRUE(panel().registerAccount(L"中\"@example.com", L"a\\b\nc\td", L"", L"", error));
  EXPECT_EQ(
      Sent(),
      Texts{PlainPost(kPath, "{\"email\":\"中\\\"@example.com\",\"password\":\"a\\\\b\\nc\td\"}")});
}

TEST_F(Register, WithoutACredentialInTheReplyTheUserIsSignedIn) {
  OnPost(kPath, R"({"data":true})");
  OnPost(kLogin, kCredential);
  error = L"earlier";
  EXPECT_TRUE(Try(L"inv", L"123456"));
  EXPECT_EQ(Sent().at(1), PlainPost(kLogin, kBody));
  EXPECT_EQ(machine.http.Lines().size(), 2u);
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer new");
  EXPECT_EQ(error, L"earlier");
}

TEST_F(Register, RegisteringTwiceWithTheSamePasswordEndsSignedIn) {
  OnPost(kPath,
         Refusal(400, R"({"message":"\u90ae\u7bb1\u5df2\u5728\u7cfb\u7edf\u4e2d\u5b58\u5728"})"));
  OnPost(kLogin, kCredential);
  EXPECT_TRUE(Try());
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer new");
  EXPECT_EQ(Read<Email>(panel()), L"new@example.com");
}

TEST_F(Register, AFailedRequestFallsBackOnTheLoginAsWell) {
  OnPost(kPath, Unreachable(12002));
  OnPost(kLogin, kCredential);
  EXPECT_TRUE(Try());
}

TEST_F(Register, AnAddressThatExistsHasALineOfItsOwn) {
  ExpectFailure(Refusal(400, R"({"message":"\u90ae\u7bb1\u5df2\u5b58\u5728"})"),
                L"这个邮箱已经注册过了，请用下面的「去登录」进入（REG 400）");
  ExpectFailure(Ok(R"({"message":"x 已存在 y"})"),
                L"这个邮箱已经注册过了，请用下面的「去登录」进入（REG 200）");
}

// What the panels really say does not hold the marker, and each such try costs two logins.
TEST_F(Register, ThePanelsOwnWordsForATakenAddressAreShown) {
  ExpectFailure(
      Refusal(400, R"({"message":"\u90ae\u7bb1\u5df2\u5728\u7cfb\u7edf\u4e2d\u5b58\u5728"})"),
      L"邮箱已在系统中存在（REG 400）");
  EXPECT_EQ(Paths(), (Texts{"POST passport/auth/register", "POST passport/auth/login",
                            "POST passport/auth/login"}));
}

TEST_F(Register, ThePanelsMessageIsShownAndNotTheLogins) {
  ExpectFailure(
      Refusal(422, R"({"message":"\u9080\u8bf7\u7801\u65e0\u6548","errors":{"a":["b"]}})"),
      L"邀请码无效（REG 422）");
}

TEST_F(Register, WithoutAMessageTheTransportsTextIsShown) {
  ExpectFailure(Refusal(500), L"面板 HTTP 500（REG 500）");
  ExpectFailure(Unreachable(12029), L"无法连上面板服务器。（REG 12029）");
}

TEST_F(Register, WithNeitherThereIsAGeneralLine) {
  ExpectFailure(Ok("{}"), L"注册失败（REG 200）");
}

TEST_F(Register, ATextThatTheCallerBroughtCountsAsOne) {
  error = L"earlier";
  ExpectFailure(Ok("{}"), L"earlier（REG 200）");
}

TEST_F(Register, AStatusThatCanNotBeReadIsLeftOut) {
  ExpectFailure({.body = "{}", .statusUnreadable = true}, L"注册失败（REG）");
}

TEST_F(Register, AFailureSignsOutInMemoryAndKeepsTheFile) {
  ExpectFailure(Refusal(500), L"面板 HTTP 500（REG 500）");
  EXPECT_EQ(machine.files.Read(sessionPath),
            "{\"email\":\"user@example.com\",\"auth_data\":\"Bearer abc\"}\n");
}

TEST_F(Register, ASessionThatCanNotBeSavedKeepsTheCredential) {
  machine.files.SetReadOnly(sessionPath, true);
  OnPost(kPath, kCredential);
  EXPECT_FALSE(Try());
  EXPECT_EQ(error, L"无法保存登录状态");
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer new");
  EXPECT_EQ(Read<Email>(panel()), L"new@example.com");
  EXPECT_EQ(machine.http.Lines().size(), 1u);
}

TEST_F(Register, ALoginWhoseSessionCanNotBeSavedIsAFailedRegistration) {
  machine.files.SetReadOnly(sessionPath, true);
  OnPost(kPath, R"({"data":true})");
  OnPost(kLogin, kCredential);
  EXPECT_FALSE(Try());
  EXPECT_EQ(error, L"注册失败（REG 200）");
  EXPECT_EQ(Read<AuthData>(panel()), L"");
}

// The sign-in behind a registration is the object's own, whatever class it is of.
class OtherLogin : public XboardControlPlane {
 public:
  using XboardControlPlane::XboardControlPlane;
  bool login(const std::wstring& address, const std::wstring& password,
             std::wstring& /*error*/) override {
    asked += address + L"/" + password + L";";
    return true;
  }
  std::wstring asked;
};

TEST_F(Register, TheLoginIsAVirtualCall) {
  OtherLogin other(L"https://panel.example", sessionPath, L"", L"");
  OnPost(kPath, Refusal(500));
  EXPECT_TRUE(other.registerAccount(L"a", L"b", L"", L"", error));
  OnPost("passport/auth/forget", R"({"data":true})");
  EXPECT_TRUE(other.resetPassword(L"c", L"1", L"d", error));
  EXPECT_EQ(other.asked, L"a/b;c/d;");
}

}  // namespace
}  // namespace vpn
