// Registration, mail codes and the reset of a password.
#include "tests/e2e/harness/sandbox.h"
#include "tests/e2e/panel/account/account_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr wchar_t kNewEmail[] = L"new@tavrin.example";

class Registration : public AccountTest {
 protected:
  std::wstring MailedCode(const char* email) const {
    return standins::ToWide(panel.State()["mailCodes"].at(email).get<std::string>());
  }

  bool RegisterNew(vpn::XboardControlPlane& plane) {
    return plane.registerAccount(kNewEmail, L"secret-9", L"", L"", error);
  }

  void ExpectSignedInAs(const wchar_t* email) {
    vpn::XboardControlPlane restarted = Restart();
    vpn::AccountSession session;
    EXPECT_TRUE(restarted.fetchAccount(session, error)) << standins::ToUtf8(error);
    EXPECT_EQ(session.email, email);
  }
};

TEST_F(Registration, ConfigTellsWhatIsNeeded) {
  panel.Set({{"config", {{"is_email_verify", 1}, {"is_invite_force", 0}, {"is_recaptcha", 1}}}});
  vpn::XboardControlPlane plane = Restart();
  vpn::RegisterConfig config;
  ASSERT_TRUE(plane.fetchRegisterConfig(config, error));
  EXPECT_TRUE(config.emailVerify);
  EXPECT_FALSE(config.inviteForce);
  EXPECT_TRUE(config.recaptcha);
  ExpectLines(panel.Sequence(), {"GET /api/v1/guest/comm/config"});
}

TEST_F(Registration, ConfigFromTheSecondPath) {
  panel.Answer("/api/v1/guest/comm/config", 404);
  panel.Answer("/api/v1/passport/comm/config", 200, R"({"data":{"is_invite_force":1}})");
  vpn::XboardControlPlane plane = Restart();
  vpn::RegisterConfig config;
  ASSERT_TRUE(plane.fetchRegisterConfig(config, error));
  EXPECT_TRUE(config.inviteForce);
  EXPECT_FALSE(config.emailVerify);
  EXPECT_EQ(error, L"");
  ExpectLines(panel.Sequence(),
              {"GET /api/v1/guest/comm/config", "GET /api/v1/passport/comm/config"});
}

TEST_F(Registration, ConfigFromNowhere) {
  panel.Answer("/api/v1/guest/comm/config", 500);
  vpn::XboardControlPlane plane = Restart();
  vpn::RegisterConfig config;
  config.recaptcha = true;
  EXPECT_FALSE(plane.fetchRegisterConfig(config, error));
  EXPECT_EQ(error, L"面板 HTTP 404（CFG 404）");
  EXPECT_FALSE(config.recaptcha);
}

TEST_F(Registration, WithMailCodeAndInviteCode) {
  panel.Set({{"config", {{"is_email_verify", 1}, {"is_invite_force", 1}, {"is_recaptcha", 0}}}});
  panel.SetUser({{"codes", {{{"code", "INVITE77"}, {"status", 0}}}}});
  vpn::XboardControlPlane plane = Restart();
  ASSERT_TRUE(plane.sendEmailCode(kNewEmail, error)) << standins::ToUtf8(error);
  const std::wstring code = MailedCode("new@tavrin.example");
  EXPECT_EQ(code.size(), 6U);
  ASSERT_TRUE(plane.registerAccount(kNewEmail, L"sec\"ret\\9", L"INVITE77", code, error))
      << standins::ToUtf8(error);
  ExpectLines(panel.Sequence(),
              {R"(POST /api/v1/passport/comm/sendEmailVerify {"email":"new@tavrin.example"})",
               R"(POST /api/v1/passport/auth/register {"email":"new@tavrin.example",)"
               R"("password":"sec\"ret\\9","invite_code":"INVITE77","email_code":")" +
                   standins::ToUtf8(code) + "\"}"});
  EXPECT_EQ(panel.State()["users"][1]["password"], "sec\"ret\\9");
  EXPECT_EQ(panel.User()["codes"][0]["status"], 1);
  ExpectSignedInAs(kNewEmail);
}

TEST_F(Registration, CodesThatAreEmptyAreNotSent) {
  vpn::XboardControlPlane plane = Restart();
  ASSERT_TRUE(RegisterNew(plane));
  ExpectLines(panel.Sequence(),
              {R"(POST /api/v1/passport/auth/register {"email":"new@tavrin.example",)"
               R"("password":"secret-9"})"});
  const std::string credential = panel.State()["users"][1]["sessions"][0];
  EXPECT_EQ(SessionFile(), R"({"email":"new@tavrin.example","auth_data":")" + credential + "\"}\n");
}

TEST_F(Registration, WithoutACredentialInTheAnswerTheLoginFollows) {
  panel.Set({{"registerSignsIn", false}});
  vpn::XboardControlPlane plane = Restart();
  ASSERT_TRUE(RegisterNew(plane));
  EXPECT_EQ(panel.Requests().size(), 2U);
  ExpectSignedInAs(kNewEmail);
}

TEST_F(Registration, ExistingUserWithTheRightPasswordIsSignedIn) {
  vpn::XboardControlPlane plane = Restart();
  EXPECT_TRUE(plane.registerAccount(kTypedEmail, kTypedPassword, L"", L"", error));
  EXPECT_EQ(panel.Requests().size(), 2U);
  ExpectSignedInAs(kTypedEmail);
}

TEST_F(Registration, ExistingUserWithAnotherPasswordReadsThePanelsText) {
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.registerAccount(kTypedEmail, L"another", L"", L"", error));
  EXPECT_EQ(error, L"邮箱已在系统中存在（REG 400）");
  EXPECT_FALSE(Exists(sessionPath));
  panel.Set({{"family", "v2board"}});
  error.clear();
  EXPECT_FALSE(plane.registerAccount(kTypedEmail, L"another", L"", L"", error));
  EXPECT_EQ(error, L"邮箱已在系统中存在（REG 500）");
}

TEST_F(Registration, PanelThatSaysItInTheOtherWords) {
  panel.Answer("/api/v1/passport/auth/register", 400,
               R"({"message":"\u90ae\u7bb1\u5df2\u5b58\u5728"})");
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.registerAccount(kTypedEmail, L"another", L"", L"", error));
  EXPECT_EQ(error, L"这个邮箱已经注册过了，请用下面的「去登录」进入（REG 400）");
}

TEST_F(Registration, MissingInviteCode) {
  panel.Set({{"config", {{"is_email_verify", 0}, {"is_invite_force", 1}, {"is_recaptcha", 0}}}});
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(RegisterNew(plane));
  EXPECT_EQ(error, L"必须使用邀请码才可以注册（REG 422）");
}

TEST_F(Registration, PanelWithACaptchaCanOnlyRefuse) {
  panel.Set({{"config", {{"is_email_verify", 0}, {"is_invite_force", 0}, {"is_recaptcha", 1}}}});
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.sendEmailCode(kNewEmail, error));
  EXPECT_EQ(error, L"验证码有误（SEND 400）");
  EXPECT_FALSE(RegisterNew(plane));
  EXPECT_EQ(error, L"验证码有误（REG 400）");
}

TEST_F(Registration, PasswordWithATabIsLostOnTheWay) {
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.registerAccount(kNewEmail, L"a\tb", L"", L"", error));
  EXPECT_EQ(error, L"邮箱不能为空 (and 1 more error)（REG 422）");
}

TEST_F(Registration, SecondCodeWithinTheMinuteIsRefused) {
  vpn::XboardControlPlane plane = Restart();
  ASSERT_TRUE(plane.sendEmailCode(kNewEmail, error));
  EXPECT_FALSE(plane.sendEmailCode(kNewEmail, error));
  EXPECT_EQ(error, L"验证码已发送，请过一会再请求（SEND 400）");
}

TEST_F(Registration, ResetSignsInWithTheNewPassword) {
  vpn::XboardControlPlane plane = Restart();
  ASSERT_TRUE(plane.sendEmailCode(kTypedEmail, error));
  const std::wstring code = MailedCode("user@tavrin.example");
  ASSERT_TRUE(plane.resetPassword(kTypedEmail, code, L"brand-new", error));
  const Lines sequence = panel.Sequence();
  ASSERT_EQ(sequence.size(), 3U);
  EXPECT_EQ(sequence[1],
            R"(POST /api/v1/passport/auth/forget {"email":"user@tavrin.example","email_code":")" +
                standins::ToUtf8(code) + R"(","password":"brand-new"})");
  EXPECT_EQ(sequence[2], R"(POST /api/v1/passport/auth/login {"email":"user@tavrin.example",)"
                         R"("password":"brand-new"})");
  ExpectSignedInAs(kTypedEmail);
}

TEST_F(Registration, ResetWithAWrongCode) {
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.resetPassword(kTypedEmail, L"000000", L"brand-new", error));
  EXPECT_EQ(error, L"邮箱验证码有误（RESET 400）");
  EXPECT_EQ(panel.Requests().size(), 1U);
  EXPECT_EQ(panel.User()["password"], kPassword);
}

TEST_F(Registration, ResetThatWorksThoughTheLoginDoesNot) {
  vpn::XboardControlPlane plane = Restart();
  ASSERT_TRUE(plane.sendEmailCode(kTypedEmail, error));
  panel.Answer("/api/v1/passport/auth/login", 502);
  EXPECT_FALSE(plane.resetPassword(kTypedEmail, MailedCode("user@tavrin.example"), L"new", error));
  EXPECT_EQ(error, L"密码已重置，请用新密码登录（RESET）");
  EXPECT_EQ(panel.User()["password"], "new");
}

TEST_F(Registration, PanelThatIsDown) {
  apiBase = standins::ToWide(panel.nowhere());
  vpn::XboardControlPlane plane = Restart();
  vpn::RegisterConfig config;
  EXPECT_FALSE(plane.fetchRegisterConfig(config, error));
  EXPECT_EQ(error, L"无法连上面板服务器。（CFG 12029）");
  error.clear();
  EXPECT_FALSE(plane.sendEmailCode(kNewEmail, error));
  EXPECT_EQ(error, L"无法连上面板服务器。（SEND 12029）");
  error.clear();
  EXPECT_FALSE(RegisterNew(plane));
  EXPECT_EQ(error, L"无法连上面板服务器。（REG 12029）");
  error.clear();
  EXPECT_FALSE(plane.resetPassword(kTypedEmail, L"123456", L"brand-new", error));
  EXPECT_EQ(error, L"无法连上面板服务器。（RESET 12029）");
}

TEST_F(Registration, AnswerThatHoldsNothingHasALineOfItsOwn) {
  panel.Answer("/api/v1/passport/auth/register", 200, R"({"data":true})");
  panel.Answer("/api/v1/passport/auth/login", 200, "{}");
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(RegisterNew(plane));
  EXPECT_EQ(error, L"注册失败（REG 200）");
  EXPECT_FALSE(Exists(sessionPath));
}

}  // namespace
}  // namespace e2e
