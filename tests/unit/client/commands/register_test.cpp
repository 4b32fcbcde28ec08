#include "tests/unit/client/panel_account_test.h"

namespace vpn {
namespace {

constexpr wchar_t kEmail[] = L"new@mail.example";
constexpr char kConfig[] = "/api/v1/guest/comm/config";
constexpr char kSend[] = "/api/v1/passport/comm/sendEmailVerify";
constexpr char kRegister[] = "/api/v1/passport/auth/register";
constexpr char kForget[] = "/api/v1/passport/auth/forget";

class RegisterTest : public unit::PanelAccountTest {
 protected:
  RegisterTest() {
    Wants(0, 0, 0);
    Post(kSend, {.body = R"({"data":true})"});
    Post(kRegister, {.body = unit::kSignedIn});
    Post(kForget, {.body = R"({"data":true})"});
    Post("/api/v1/passport/auth/login", {.body = unit::kSignedIn});
    PutUser();
    Get("/api/v1/user/getSubscribe", {.body = unit::kNoPlan});
  }
  void Wants(int mail, int invite, int captcha) {
    Get(kConfig, {.body = R"({"data":{"is_email_verify":)" + std::to_string(mail) +
                          R"(,"is_invite_force":)" + std::to_string(invite) +
                          R"(,"is_recaptcha":)" + std::to_string(captcha) + "}}"});
  }
  // The body of the last request to this path.
  std::string BodyTo(const std::string& path) const {
    std::string body;
    for (const auto& request : machine.http.Requests()) {
      body = request.url == "https://panel.example" + path ? request.body : body;
    }
    return body;
  }
};

TEST_F(RegisterTest, AnEmailAndAPasswordMayBeEnough) {
  machine.console.input = "secret-9\n";
  EXPECT_EQ(Run({L"register", kEmail, L"--password-stdin"}), 0);
  EXPECT_EQ(Out(), "Signed in as new@mail.example. Plan: none.\n");
  EXPECT_EQ(BodyTo(kRegister), R"({"email":"new@mail.example","password":"secret-9"})");
  EXPECT_EQ(BodyTo(kSend), "");
  EXPECT_EQ(Session(), unit::kNewSession);
}

TEST_F(RegisterTest, APersonIsAskedForWhatThePanelWants) {
  UseTerminal();
  Wants(1, 1, 0);
  Type({L"INV1", L"secret-9", L"secret-9", L"123456"});
  EXPECT_EQ(Run({L"register", kEmail}), 0);
  EXPECT_EQ(
      BodyTo(kRegister),
      R"({"email":"new@mail.example","password":"secret-9","invite_code":"INV1","email_code":"123456"})");
  const std::vector<std::string> lines = machine.console.terminal.Lines();
  EXPECT_EQ(lines, (std::vector<std::string>{
                       "Invite code: INV1", "New password:", "The same again:",
                       "A code has been mailed to new@mail.example.", "Code from the mail: 123456",
                       "Signed in as new@mail.example. Plan: none.", ""}));
}

TEST_F(RegisterTest, AScriptGivesTheCodeInTheSecondLine) {
  Wants(1, 1, 0);
  machine.console.input = "secret-9\n123456\n";
  EXPECT_EQ(Run({L"register", kEmail, L"--invite", L"INV1", L"--password-stdin"}), 0);
  EXPECT_EQ(
      BodyTo(kRegister),
      R"({"email":"new@mail.example","password":"secret-9","invite_code":"INV1","email_code":"123456"})");
  EXPECT_EQ(Err(), "A code has been mailed to new@mail.example.\n");
}

TEST_F(RegisterTest, AnInviteCodeThatIsWantedAndMissing) {
  Wants(0, 1, 0);
  machine.console.input = "secret-9\n";
  EXPECT_EQ(Run({L"register", kEmail, L"--password-stdin"}), 3);
  EXPECT_EQ(Err(), "tavrinctl: the panel wants an invite code; give it with --invite CODE\n");
  EXPECT_EQ(BodyTo(kRegister), "");
  ExpectOldSession();
}

TEST_F(RegisterTest, ACaptchaIsSaidBeforeAnyQuestion) {
  Wants(1, 1, 1);
  EXPECT_EQ(Run({L"register", kEmail}), 1);
  EXPECT_EQ(Err(),
            "The panel wants a captcha, which only its own page can show\n"
            "  What to do: register on the panel's web page, then run tavrinctl login.\n");
  EXPECT_EQ(machine.http.Requests().size(), 1u);
  ExpectOldSession();
}

TEST_F(RegisterTest, APasswordThatPanelsDropIsNotSent) {
  machine.console.input = "tab\there\n";
  EXPECT_EQ(Run({L"register", kEmail, L"--password-stdin"}), 3);
  EXPECT_EQ(Err(), "tavrinctl: the password holds a control character, which panels do not take\n");
  EXPECT_EQ(BodyTo(kRegister), "");
}

TEST_F(RegisterTest, TwoPasswordsThatDifferAreNotSent) {
  Type({L"secret-9", L"secret-8"});
  EXPECT_EQ(Run({L"register", kEmail}), 3);
  EXPECT_EQ(BodyTo(kRegister), "");
}

TEST_F(RegisterTest, ARefusalKeepsTheOldSession) {
  Post(kRegister, {.status = 400, .body = R"({"status":"fail","message":"邮箱已在系统中存在"})"});
  Post("/api/v1/passport/auth/login", {.status = 400, .body = R"({"message":"邮箱或密码错误"})"});
  machine.console.input = "secret-9\n";
  EXPECT_EQ(Run({L"register", kEmail, L"--password-stdin"}), 1);
  EXPECT_EQ(Err(),
            "邮箱已在系统中存在（REG 400）\n"
            "  What to do: this is the panel's own text: do as it says, or ask whoever runs the "
            "panel.\n");
  ExpectOldSession();
}

TEST_F(RegisterTest, AResetSetsThePasswordAndSignsIn) {
  machine.console.input = "secret-9\n123456\n";
  EXPECT_EQ(Run({L"reset-password", kEmail, L"--password-stdin"}), 0);
  EXPECT_EQ(BodyTo(kForget),
            R"({"email":"new@mail.example","email_code":"123456","password":"secret-9"})");
  EXPECT_EQ(Session(), unit::kNewSession);
  EXPECT_EQ(Out(), "Signed in as new@mail.example. Plan: none.\n");
}

TEST_F(RegisterTest, AResetThatEndsSignedOutKeepsTheOldSession) {
  Post("/api/v1/passport/auth/login", {.status = 429, .body = R"({"message":"密码错误次数过多"})"});
  machine.console.input = "secret-9\n123456\n";
  EXPECT_EQ(Run({L"reset-password", kEmail, L"--password-stdin"}), 1);
  EXPECT_EQ(Err(),
            "A code has been mailed to new@mail.example.\n"
            "密码已重置，请用新密码登录（RESET）\n"
            "  What to do: sign in with the new password.\n");
  ExpectOldSession();
}

TEST_F(RegisterTest, AWrongMailCode) {
  Post(kForget, {.status = 400, .body = R"({"message":"邮箱验证码有误"})"});
  machine.console.input = "secret-9\n1\n";
  EXPECT_EQ(Run({L"reset-password", kEmail, L"--password-stdin", L"--json"}), 1);
  EXPECT_EQ(Out(),
            "{\n  \"schema\": 1,\n  \"ok\": false,\n"
            "  \"error\": \"邮箱验证码有误（RESET 400）\"\n}\n");
  ExpectOldSession();
}

}  // namespace
}  // namespace vpn
