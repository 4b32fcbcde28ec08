#include <windows.h>
#include <winhttp.h>

#include "tests/unit/client/panel_account_test.h"

namespace vpn {
namespace {

constexpr wchar_t kEmail[] = L"new@mail.example";
constexpr char kLogin[] = "/api/v1/passport/auth/login";

class LoginTest : public unit::PanelAccountTest {
 protected:
  LoginTest() {
    Post(kLogin, {.body = unit::kSignedIn});
    PutUser();
  }
  int LogIn(const std::string& input) {
    machine.console.input = input;
    return Run({L"login", kEmail, L"--password-stdin"});
  }
  std::string LoginBody() const { return machine.http.Requests().at(0).body; }
};

TEST_F(LoginTest, TheNewSessionTakesTheOldOnesPlaceBehindTheProof) {
  EXPECT_EQ(LogIn("secret\n"), 0);
  EXPECT_EQ(Out(), "Signed in as new@mail.example. Plan: 标准版, until 2099-12-30.\n");
  EXPECT_EQ(Err(), "");
  EXPECT_EQ(Session(), unit::kNewSession);
  EXPECT_FALSE(machine.files.Exists(std::wstring(unit::kRuntime) + L"\\session.json.new"));
  const auto requests = machine.http.Requests();
  EXPECT_EQ(requests.at(1).url, "https://panel.example/api/v1/user/getSubscribe");
  EXPECT_NE(requests.at(1).headers.find("Authorization: Bearer NEW\r\n"), std::string::npos);
}

TEST_F(LoginTest, AsJsonWithoutASecret) {
  machine.console.input = "secret\n";
  EXPECT_EQ(Run({L"login", kEmail, L"--password-stdin", L"--json"}), 0);
  EXPECT_EQ(Out(), R"({
  "schema": 1,
  "ok": true,
  "email": "new@mail.example",
  "plan": {
    "id": 2,
    "name": "标准版",
    "expires": "2099-12-30",
    "expired": false
  },
  "traffic": {
    "used": 10737418240,
    "total": 214748364800
  },
  "devices": {
    "used": 0,
    "limit": 3
  },
  "nodes": 1
}
)");
}

TEST_F(LoginTest, ThePasswordIsAskedWithoutAnEcho) {
  UseTerminal();
  Type({L"sécret 密"});
  EXPECT_EQ(Run({L"login", kEmail}), 0);
  EXPECT_EQ(LoginBody(), R"({"email":"new@mail.example","password":"sécret 密"})");
  EXPECT_EQ(machine.console.terminal.Lines().at(0), "Password:");
  EXPECT_EQ(machine.console.inputMode, 7u);
}

TEST_F(LoginTest, HardPasswordsArriveAsTheyAre) {
  for (const auto& [password, sent] : std::vector<std::pair<std::string, std::string>>{
           {R"(quo"te)", R"(quo\"te)"},
           {R"(back\slash)", R"(back\\slash)"},
           {" blanks  inside ", " blanks  inside "},
           {"wörd 密 🔒", "wörd 密 🔒"},
           {std::string(1000, 'x'), std::string(1000, 'x')},
           {"tab\there", "tab\there"}}) {
    machine.http.Forget();
    EXPECT_EQ(LogIn(password + "\r\n"), 0);
    EXPECT_EQ(LoginBody(), R"({"email":"new@mail.example","password":")" + sent + "\"}");
  }
}

TEST_F(LoginTest, AnEmailThatIsNoneNeverReachesThePanel) {
  for (const wchar_t* email : {L"nobody", L"@mail.example", L"me@", L"a@b@c", L"a b@c", L"a\"@c",
                               L"a\\@c", L"a\n@c", L""}) {
    EXPECT_EQ(Run({L"login", email, L"--password-stdin"}), 3) << email;
  }
  EXPECT_TRUE(machine.http.Requests().empty());
  ExpectOldSession();
  EXPECT_TRUE(Err().starts_with("tavrinctl: \"nobody\" is no e-mail address\n"));
}

TEST_F(LoginTest, WithoutAConsoleAndWithoutAPreparedPasswordItSaysSo) {
  EXPECT_EQ(Run({L"login", kEmail}), 3);
  EXPECT_EQ(Err(),
            "tavrinctl: there is no console to ask for the password; give it on the standard "
            "input with --password-stdin\n");
  EXPECT_EQ(LogIn(""), 3);
  EXPECT_EQ(LogIn("\n"), 3);
  EXPECT_TRUE(
      Err().ends_with("tavrinctl: the input ended before the answer to: Password: \n"
                      "tavrinctl: the password is empty\n"));
  EXPECT_TRUE(machine.http.Requests().empty());
  ExpectOldSession();
}

TEST_F(LoginTest, CtrlCAtTheQuestionIs130) {
  Type({L"\x03"});
  EXPECT_EQ(Run({L"login", kEmail}), 130);
  EXPECT_TRUE(machine.http.Requests().empty());
  EXPECT_EQ(machine.console.inputMode, 7u);
  ExpectOldSession();
}

TEST_F(LoginTest, CtrlCWhileThePanelIsAskedKeepsTheOldSession) {
  Post(kLogin, {.body = unit::kSignedIn, .receiveTime = 1000});
  machine.clock.After(500, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(LogIn("secret\n"), 130);
  EXPECT_EQ(Err(), "Interrupted.\n");
  ExpectOldSession();
}

TEST_F(LoginTest, ALogInPageWithATokenInItsScriptDoesNotCostTheSession) {
  machine.http.Handle([](const sim::HttpRequestRecord&) {
    return std::optional<sim::HttpAnswer>(
        {.body = "<html><script>var s = {\"token\":\"hotel\"}</script></html>"});
  });
  EXPECT_EQ(LogIn("secret\n"), 1);
  EXPECT_EQ(Err(),
            "https://panel.example answers with a web page, not as a panel does\n"
            "  What to do: sign in to the network that you are in, or correct apiBase in "
            "panel.json.\n");
  ExpectOldSession();
}

TEST_F(LoginTest, ACredentialThatThePanelRefusesDoesNotCostTheSession) {
  Get("/api/v1/user/getSubscribe", {.status = 403, .body = R"({"message":"未登录或登陆已过期"})"});
  EXPECT_EQ(LogIn("secret\n"), 1);
  EXPECT_EQ(Err(), "面板 HTTP 403\n  What to do: sign in again: the session has ended.\n");
  ExpectOldSession();
}

TEST_F(LoginTest, WithoutAPlanItIsASignInAllTheSame) {
  Get("/api/v1/user/getSubscribe", {.body = unit::kNoPlan});
  EXPECT_EQ(LogIn("secret\n"), 0);
  EXPECT_EQ(Out(), "Signed in as new@mail.example. Plan: none.\n");
  EXPECT_EQ(Session(), unit::kNewSession);
}

TEST_F(LoginTest, NodesThatDoNotComeAreToldAndNoReasonAgainstTheSession) {
  Get("/api/v1/client/subscribe?token=0f1e", {.status = 403});
  Get("/api/v1/user/server/fetch", {.body = R"({"data":[]})"});
  EXPECT_EQ(LogIn("secret\n"), 0);
  EXPECT_EQ(Session(), unit::kNewSession);
  EXPECT_EQ(Err(),
            "面板未下发可用节点，请确认节点已显示且套餐权限组一致\n"
            "  What to do: on the panel: show the node, and put it into the plan's group.\n");
}

TEST_F(LoginTest, ADirectoryForAdministratorsAloneAsksForAnElevatedConsole) {
  machine.files.SetReadOnly(unit::kRuntime, true);
  EXPECT_EQ(LogIn("secret\n"), 1);
  EXPECT_EQ(Err(),
            "无法保存登录状态\n"
            "  What to do: run this from an elevated console: this user may not write to "
            "C:\\Program Files\\Tavrin\\runtime.\n");
  EXPECT_TRUE(machine.http.Requests().empty());
  ExpectOldSession();
}

TEST_F(LoginTest, ARuntimeDirectoryThatIsNotThereIsSaid) {
  machine.console.input = "secret\n";
  EXPECT_EQ(Run({L"login", L"me", L"--password-stdin", L"--runtime", L"D:\\none"}), 1);
  EXPECT_EQ(Err(),
            "cannot write D:\\none\\session.json.new\n"
            "  What to do: name the service's runtime directory with --runtime: there is no "
            "D:\\none.\n");
}

TEST_F(LoginTest, AFullDiskDoesNotCostTheSession) {
  machine.files.Put(std::wstring(unit::kRuntime) + L"\\session.json.new", "");
  machine.files.SetWritesFail(std::wstring(unit::kRuntime) + L"\\session.json.new", true);
  EXPECT_EQ(LogIn("secret\n"), 1);
  EXPECT_EQ(Err(), "请先登录\n  What to do: sign in.\n");
  ExpectOldSession();
}

TEST_F(LoginTest, TheServiceReadsTheOldFileForAMoment) {
  const std::wstring file = std::wstring(unit::kRuntime) + L"\\session.json";
  machine.files.SetLocked(file, true);
  machine.clock.After(300, [&] { machine.files.SetLocked(file, false); });
  EXPECT_EQ(LogIn("secret\n"), 0);
  EXPECT_EQ(Session(), unit::kNewSession);
  EXPECT_EQ(machine.calls.Count("MoveFileExW"), 7u);
}

TEST_F(LoginTest, AFileThatCantBeReplacedStays) {
  machine.files.SetReadOnly(std::wstring(unit::kRuntime) + L"\\session.json", true);
  EXPECT_EQ(LogIn("secret\n"), 1);
  EXPECT_EQ(Err(),
            "session.json can't be replaced\n"
            "  What to do: run this from an elevated console: this user may not write to "
            "C:\\Program Files\\Tavrin\\runtime.\n");
  ExpectOldSession();
}

TEST_F(LoginTest, WhatAnEndedSignInLeftIsWrittenOver) {
  machine.files.Put(std::wstring(unit::kRuntime) + L"\\session.json.new", "old rubbish");
  EXPECT_EQ(LogIn("secret\n"), 0);
  EXPECT_EQ(Session(), unit::kNewSession);
}

TEST_F(LoginTest, TheFirstSessionNeedsNoOldOne) {
  machine.files.Remove(std::wstring(unit::kRuntime) + L"\\session.json");
  EXPECT_EQ(LogIn("secret\n"), 0);
  EXPECT_EQ(Session(), unit::kNewSession);
}

class LocalLoginTest : public unit::ClientTest {
 protected:
  LocalLoginTest() { PutAccount(); }
  const std::wstring session = std::wstring(unit::kRuntime) + L"\\session.json";
};

TEST_F(LocalLoginTest, AnAccountOfThisMachine) {
  machine.files.Remove(session);
  machine.console.input = "secret\n";
  EXPECT_EQ(Run({L"login", L"someone@mail.example", L"--password-stdin"}), 0);
  EXPECT_EQ(Out(), "Signed in as someone@mail.example. Plan: until 2999-12-31.\n");
  EXPECT_EQ(machine.files.Read(session),
            "{\"email\":\"someone@mail.example\",\"expireAt\":\"2999-12-31\"}\n");
}

TEST_F(LocalLoginTest, AWrongPassword) {
  const auto before = machine.files.Read(session);
  machine.console.input = "wrong\n";
  EXPECT_EQ(Run({L"login", L"someone@mail.example", L"--password-stdin", L"--json"}), 1);
  EXPECT_EQ(Out(),
            "{\n  \"schema\": 1,\n  \"ok\": false,\n"
            "  \"error\": \"email or password is incorrect\"\n}\n");
  EXPECT_EQ(Err(),
            "email or password is incorrect\n"
            "  What to do: give the email and the password that stand in account.json.\n");
  EXPECT_EQ(machine.files.Read(session), before);
}

TEST_F(LocalLoginTest, WhatItHasNotIsSaidBeforeAnyQuestion) {
  EXPECT_EQ(Run({L"register", L"me@mail.example"}), 1);
  EXPECT_EQ(Run({L"reset-password", L"me@mail.example"}), 1);
  EXPECT_EQ(Run({L"plans"}), 1);
  EXPECT_EQ(Run({L"buy", L"2", L"month_price"}), 1);
  EXPECT_EQ(Run({L"order", L"1"}), 1);
  EXPECT_EQ(Run({L"invite"}), 1);
  EXPECT_EQ(Run({L"referrals"}), 1);
  const std::string todo =
      "\n  What to do: put the panel's address into apiBase of panel.json: these operations need "
      "one.\n";
  EXPECT_EQ(Err(), "当前环境不支持注册" + todo + "当前环境不支持发送验证码" + todo +
                       "当前环境不支持购买套餐" + todo + "当前环境不支持购买套餐" + todo +
                       "当前环境不支持查询订单" + todo + "当前环境不支持邀请" + todo +
                       "当前环境不支持邀请" + todo);
  EXPECT_EQ(Run({L"device"}), 0);
  EXPECT_EQ(Out(), "Devices in use: 1 of 1, this computer among them.\n");
}

}  // namespace
}  // namespace vpn
