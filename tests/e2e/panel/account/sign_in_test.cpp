// Signing in and out, and the session file.
#include "tests/e2e/harness/sandbox.h"
#include "tests/e2e/panel/account/account_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr wchar_t kLockedText[] = L"密码错误次数过多，请 60 分钟后再试（LOGIN 429）";

class SignIn : public AccountTest {
 protected:
  // The credential of the last sign-in.
  std::string LastCredential() const {
    const Json sessions = panel.User()["sessions"];
    return sessions.back();
  }
};

TEST_F(SignIn, LogInRestartStillSignedInLogOut) {
  {
    vpn::XboardControlPlane plane = Restart();
    ASSERT_TRUE(plane.login(kTypedEmail, kTypedPassword, error)) << standins::ToUtf8(error);
  }
  const std::string credential = LastCredential();
  EXPECT_EQ(credential.size(), 55U);
  EXPECT_NE(credential, kCredential);
  EXPECT_EQ(SessionFile(),
            R"({"email":"user@tavrin.example","auth_data":")" + credential + "\"}\n");
  panel.ForgetRequests();

  vpn::XboardControlPlane restarted = Restart();
  vpn::AccountSession session;
  ASSERT_TRUE(restarted.fetchAccount(session, error));
  EXPECT_TRUE(session.loggedIn);
  EXPECT_EQ(session.email, L"user@tavrin.example");
  EXPECT_EQ(panel.Requests().at(0).headers.back(), "auth_data: " + credential);
  panel.ForgetRequests();

  EXPECT_TRUE(restarted.logout());
  EXPECT_FALSE(Exists(sessionPath));
  EXPECT_FALSE(restarted.fetchAccount(session, error));
  EXPECT_EQ(error, L"请先登录");
  vpn::XboardControlPlane again = Restart();
  error.clear();
  EXPECT_FALSE(again.fetchAccount(session, error));
  EXPECT_EQ(error, L"请先登录");
  EXPECT_TRUE(panel.Requests().empty());  // the panel is not told of the end either
}

TEST_F(SignIn, PanelThatAnswersTheJsonBodyIsAskedOnce) {
  vpn::XboardControlPlane plane = Restart();
  ASSERT_TRUE(plane.login(kTypedEmail, kTypedPassword, error));
  EXPECT_EQ(panel.Requests().size(), 1U);
}

TEST_F(SignIn, WrongPasswordIsTriedInBothForms) {
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.login(kTypedEmail, L"wrong", error));
  EXPECT_EQ(error, L"邮箱或密码错误（LOGIN 400）");
  ExpectLines(panel.Sequence(),
              {R"(POST /api/v1/passport/auth/login {"email":"user@tavrin.example",)"
               R"("password":"wrong"})",
               "POST /api/v1/passport/auth/login email=user@tavrin.example&password=wrong"});
  EXPECT_FALSE(Exists(sessionPath));
}

// The panel counts both forms, and five failures are enough for it.
TEST_F(SignIn, ThirdWrongTryLocksTheAddressEvenForTheRightPassword) {
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.login(kTypedEmail, L"wrong", error));
  EXPECT_FALSE(plane.login(kTypedEmail, L"wrong", error));
  EXPECT_EQ(error, L"邮箱或密码错误（LOGIN 400）");
  EXPECT_FALSE(plane.login(kTypedEmail, L"wrong", error));
  EXPECT_EQ(error, kLockedText);
  EXPECT_FALSE(plane.login(kTypedEmail, kTypedPassword, error));
  EXPECT_EQ(error, kLockedText);
}

TEST_F(SignIn, PanelOfTheSecondFamilyRefusesWithAnException) {
  panel.Set({{"family", "v2board"}});
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.login(kTypedEmail, L"wrong", error));
  EXPECT_EQ(error, L"邮箱或密码错误（LOGIN 500）");
  error.clear();
  EXPECT_TRUE(plane.login(kTypedEmail, kTypedPassword, error));
}

// A tab is not escaped in the JSON body, which the panel then drops; the form brings it through.
TEST_F(SignIn, PasswordWithATabGoesThroughAsAForm) {
  panel.SetUser({{"password", "a\tb"}});
  vpn::XboardControlPlane plane = Restart();
  EXPECT_TRUE(plane.login(kTypedEmail, L"a\tb", error));
  const Lines sequence = panel.Sequence();
  ASSERT_EQ(sequence.size(), 2U);
  EXPECT_EQ(sequence[1],
            "POST /api/v1/passport/auth/login email=user@tavrin.example&password=a%09b");
}

TEST_F(SignIn, MissingPasswordIsExplainedByThePanel) {
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.login(L"", L"", error));
  EXPECT_EQ(error, L"邮箱不能为空 (and 1 more error)（LOGIN 422）");
}

TEST_F(SignIn, WebPageInsteadOfAPanel) {
  panel.Behave({{"path", "*"}, {"do", "html"}});
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.login(kTypedEmail, kTypedPassword, error));
  EXPECT_EQ(error, L"登录失败，请检查邮箱密码或面板地址（LOGIN 200）");
}

TEST_F(SignIn, PanelThatIsDown) {
  apiBase = standins::ToWide(panel.nowhere());
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.login(kTypedEmail, kTypedPassword, error));
  EXPECT_EQ(error, L"无法连上面板服务器。（LOGIN 12029）");
}

TEST_F(SignIn, PanelThatAnswersOnlyTheSecondAttempt) {
  panel.Behave({{"path", "*"}, {"do", "garbage"}, {"times", 1}});
  vpn::XboardControlPlane plane = Restart();
  EXPECT_TRUE(plane.login(kTypedEmail, kTypedPassword, error));
  EXPECT_EQ(error, L"");
}

TEST_F(SignIn, FailedLoginSignsOutInMemoryAndKeepsTheFile) {
  vpn::XboardControlPlane plane = SignedIn();
  EXPECT_FALSE(plane.login(kTypedEmail, L"wrong", error));
  EXPECT_EQ(SessionFile(),
            "{\"email\":\"user@tavrin.example\",\"auth_data\":\"Bearer "
            "7QzKcXw1mUe5RtYh8JpLs2Vb9NdFg3Aa6Co4Ei0Uk7Wx5Zq8\"}\n");
  vpn::AccountSession session;
  EXPECT_FALSE(plane.fetchAccount(session, error));
  EXPECT_EQ(error, L"请先登录");
  vpn::XboardControlPlane restarted = Restart();
  EXPECT_TRUE(restarted.fetchAccount(session, error));
}

TEST_F(SignIn, SessionThatCannotBeSavedHoldsUntilTheEnd) {
  sessionPath = directory + L"\\no such directory\\session.json";
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.login(kTypedEmail, kTypedPassword, error));
  EXPECT_EQ(error, L"无法保存登录状态");
  vpn::AccountSession session;
  EXPECT_TRUE(plane.fetchAccount(session, error));
}

TEST_F(SignIn, CredentialThatThePanelNoLongerKnows) {
  panel.SetUser({{"sessions", Json::array()}});
  vpn::XboardControlPlane plane = SignedIn();
  vpn::AccountSession session;
  EXPECT_FALSE(plane.fetchAccount(session, error));
  EXPECT_EQ(error, L"面板 HTTP 403");
}

}  // namespace
}  // namespace e2e
