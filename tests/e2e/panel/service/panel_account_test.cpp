// The account's commands of the client against a living panel, over TLS: what a user does from the
// first day to the last, and what a panel that fails costs.
#include <windows.h>
#include <aclapi.h>
#include <sddl.h>

#include "tests/e2e/harness/client_run.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/e2e/panel/service/panel_service_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr char kNew[] = "new@tavrin.example";
constexpr char kSecret[] = "p+ss \"wörd\" \\ 密";

class PanelAccount : public PanelServiceTest {
 protected:
  PanelAccount() {
    Configure({{"apiBase", panel.https()}, {"deviceApi", panel.https() + "/device"}});
  }

  // What a command prints, and its exit code. `input` stands on its standard input.
  std::string Run(const std::string& arguments, DWORD exitCode, const std::string& input = "") {
    ClientRun run(box, standins::ToWide(arguments));
    run.Say(input);
    EXPECT_EQ(run.ExitCode(), exitCode) << arguments << "\n" << run.Output() << run.Errors();
    errors = run.Errors();
    ExpectNoSecret(run.Output() + errors);
    return run.Output();
  }
  // Nothing of anybody's that must stay in.
  void ExpectNoSecret(const std::string& text) const {
    for (const Json& user : panel.State()["users"]) {
      std::vector<std::string> secrets = user.at("sessions");
      for (const char* key : {"password", "token", "uuid"}) secrets.push_back(user.at(key));
      for (const std::string& secret : secrets) EXPECT_EQ(text.find(secret), std::string::npos);
    }
  }
  nlohmann::json RunJson(const std::string& arguments, DWORD exitCode,
                         const std::string& input = "") {
    return nlohmann::json::parse(Run(arguments + " --json", exitCode, input));
  }
  std::string Session() const { return ReadText(box.runtime() + L"\\session.json"); }
  Json NewUser() const { return panel.State()["users"].back(); }

  // A registration with the code that the panel mails meanwhile.
  void Register(const std::string& options = "") {
    ClientRun run(
        box, standins::ToWide("register " + std::string(kNew) + " --password-stdin" + options));
    run.Say(kSecret);
    WaitUntil("the code is mailed", [&] { return panel.State()["mailCodes"].contains(kNew); });
    run.Say(panel.State()["mailCodes"].at(kNew).get<std::string>());
    EXPECT_EQ(run.ExitCode(), 0u) << run.Errors();
    output = run.Output();
    errors = run.Errors();
  }

  std::string output;
  std::string errors;
};

TEST_F(PanelAccount, AUsersWholeStory) {
  SignOut();
  StartService();
  panel.Set({{"config", {{"is_email_verify", 1}, {"is_invite_force", 0}, {"is_recaptcha", 0}}}});

  // Somebody registers with a code from a mail, and is signed in.
  Register();
  EXPECT_EQ(output, "Signed in as new@tavrin.example. Plan: none.\n");
  EXPECT_EQ(NewUser().at("password"), kSecret);

  // There is nothing to connect to yet.
  EXPECT_EQ(Run("account", 0),
            "Account   new@tavrin.example\n"
            "Plan      none\n"
            "Devices   no limit\n"
            "Nodes     0\n");
  Run("nodes", 1);
  EXPECT_EQ(errors,
            "没有可用节点\n"
            "  What to do: renew the plan, and see whether apiBase leads to a panel at all.\n");

  // So a plan is chosen and ordered.
  EXPECT_EQ(
      Run("plans", 0),
      "Plan   Name     Period          Length     Price    Per day   Traffic   Devices\n"
      "   1   体验版   month_price     1 个月      免费                10 GB         1\n"
      "   2   标准版   month_price     1 个月    ¥19.89   ¥0.66/天    200 GB         3\n"
      "   2   标准版   quarter_price   3 个月    ¥55.00   ¥0.61/天    200 GB         3   最受欢迎\n"
      "   2   标准版   year_price      1 年     ¥120.00   ¥0.33/天    200 GB         3   超值套餐\n"
      "   3   流量包   onetime_price   一次性    ¥99.00               500 GB         –\n");
  Run("buy 2 quarter_price --yes", 0);
  const std::string first = panel.State()["orders"].back().at("trade_no");
  const std::string bought = Run("buy 2 month_price --yes", 0);
  EXPECT_EQ(errors,
            "标准版, 1 个月 (month_price): ¥19.89\n"
            "This cancels the open order " +
                first + " (标准版, quarter_price, ¥55.00).\n");
  const std::string order = panel.State()["orders"].back().at("trade_no");
  EXPECT_EQ(bought, "Order    " + order +
                        "\nPay at   https://pay.panel.example/submit.php?pid=7&type=alipay\n"
                        "已打开支付页面\n"
                        "  What to do: pay on the page; this is no error.\n"
                        "  Then: tavrinctl order " +
                        order + " --wait\n");
  EXPECT_EQ(Run("order " + first, 1), "The order is cancelled.\n");
  EXPECT_EQ(Run("order " + order, 1), "The order is not paid yet.\n");

  // It is paid while the client waits.
  ClientRun waiting(box, standins::ToWide("order " + order + " --wait"));
  WaitUntil("the client waits", [&] { return !waiting.Errors().empty(); });
  EXPECT_EQ(waiting.Errors(), "Not paid yet; waiting for 15 minutes at most.\n");
  panel.Pay(order);
  EXPECT_EQ(waiting.ExitCode(), 0u);
  EXPECT_EQ(waiting.Output(), "The order is paid.\n");

  // Now there are nodes, and the service connects.
  EXPECT_EQ(Run("account", 0),
            "Account   new@tavrin.example\n"
            "Plan      标准版, until 2099-12-30\n"
            "Traffic   ░░░░░░░░░░░░░░░░░░░░  0.0 GB of 200.0 GB\n"
            "Devices   3 at most\n"
            "Nodes     3\n");
  EXPECT_EQ(RunJson("nodes", 0).at("nodes").size(), 3u);
  EXPECT_EQ(RunJson("connect --timeout 60", 0).at("ok"), true);
  EXPECT_EQ(RunJson("status", 0).at("connected"), true);
  ClientRun disconnect(box, L"disconnect");
  EXPECT_EQ(disconnect.ExitCode(), 0u);

  // A friend is invited.
  const nlohmann::json invite = RunJson("invite", 0);
  EXPECT_EQ(invite.at("code"), NewUser().at("codes").at(0).at("code"));
  EXPECT_EQ(invite.at("link"), panel.https() + "/i/?c=" + invite.at("code").get<std::string>());
  EXPECT_EQ(Run("referrals", 0), "Page 1, 0 in all.\n");

  // This computer is counted, once; three others leave no room for a fourth.
  EXPECT_EQ(Run("device", 0), "Devices in use: 1 of 3, this computer among them.\n");
  EXPECT_EQ(Run("device", 0), "Devices in use: 1 of 3, this computer among them.\n");
  Json users = panel.State()["users"];
  users.back()["devices"] = {"one", "two", "three"};
  panel.Set({{"users", users}});
  Run("device", 1);
  EXPECT_EQ(errors,
            "设备数量已达上限（3 台）\n"
            "  What to do: this is the panel's own text: do as it says, or ask whoever runs the "
            "panel.\n");

  // And the session is forgotten.
  EXPECT_EQ(Run("logout", 0), "Signed out.\n");
  EXPECT_FALSE(Exists(box.runtime() + L"\\session.json"));
  Run("account", 1);
  EXPECT_EQ(errors, "请先登录\n  What to do: sign in.\n");
  for (const ReceivedRequest& request : panel.Requests()) EXPECT_EQ(request.listener, "https");
}

TEST_F(PanelAccount, TheSameStoryAsJson) {
  SignOut();
  panel.Set({{"config", {{"is_email_verify", 1}, {"is_invite_force", 0}, {"is_recaptcha", 0}}}});
  Register(" --json");
  EXPECT_EQ(nlohmann::json::parse(output).at("email"), kNew);
  EXPECT_TRUE(RunJson("account", 0).at("plan").is_null());
  EXPECT_EQ(RunJson("nodes", 1).at("error"), "没有可用节点");
  EXPECT_EQ(RunJson("plans", 0).at("plans").at(1).at("price"), "¥19.89");
  const nlohmann::json bought = RunJson("buy 2 month --yes", 0);
  EXPECT_EQ(bought.at("message"), "已打开支付页面");
  EXPECT_EQ(bought.at("payUrl"), "https://pay.panel.example/submit.php?pid=7&type=alipay");
  const std::string order = bought.at("tradeNo");
  EXPECT_EQ(RunJson("order " + order, 1).at("paid"), false);
  panel.Pay(order);
  EXPECT_EQ(RunJson("order " + order + " --wait", 0).at("paid"), true);
  EXPECT_EQ(RunJson("account", 0).at("plan").at("name"), "标准版");
  EXPECT_EQ(RunJson("invite", 0).at("ratePercent"), 10);
  EXPECT_EQ(RunJson("referrals", 0).at("total"), 0);
  EXPECT_EQ(RunJson("device", 0).at("limit"), 3);
  EXPECT_EQ(RunJson("logout", 0).at("wasSignedIn"), true);
  EXPECT_EQ(RunJson("account", 1).at("error"), "请先登录");
}

TEST_F(PanelAccount, ASignInReplacesTheSessionAndAWrongOneDoesNot) {
  const std::string before = Session();
  Run(std::string("login ") + kEmail + " --password-stdin", 1, "wrong");
  EXPECT_EQ(errors,
            "邮箱或密码错误（LOGIN 400）\n"
            "  What to do: this is the panel's own text: do as it says, or ask whoever runs the "
            "panel.\n");
  EXPECT_EQ(Session(), before);
  EXPECT_EQ(Run(std::string("login ") + kEmail + " --password-stdin", 0, kPassword),
            "Signed in as user@tavrin.example. Plan: 标准版, until 2099-12-30.\n");
  EXPECT_NE(Session(), before);
  EXPECT_EQ(RunJson("nodes", 0).at("nodes").size(), 3u);
  EXPECT_FALSE(Exists(box.runtime() + L"\\session.json.new"));
}

TEST_F(PanelAccount, APasswordIsResetWithACodeFromAMail) {
  ClientRun run(box,
                standins::ToWide(std::string("reset-password ") + kEmail + " --password-stdin"));
  run.Say(kSecret);
  WaitUntil("the code is mailed", [&] { return panel.State()["mailCodes"].contains(kEmail); });
  run.Say(panel.State()["mailCodes"].at(kEmail).get<std::string>());
  EXPECT_EQ(run.ExitCode(), 0u) << run.Errors();
  EXPECT_EQ(panel.State()["users"][0].at("password"), kSecret);
  EXPECT_EQ(RunJson("account", 0).at("email"), kEmail);
}

TEST_F(PanelAccount, AHotelsPageWithATokenDoesNotCostTheSession) {
  const std::string before = Session();
  panel.Behave({{"path", "*"},
                {"do", "answer"},
                {"status", 200},
                {"type", "text/html"},
                {"body", "<html><script>s={\"token\":\"hotel\"}</script></html>"}});
  Run(std::string("login ") + kEmail + " --password-stdin", 1, kPassword);
  EXPECT_EQ(errors, panel.https() +
                        " answers with a web page, not as a panel does\n"
                        "  What to do: sign in to the network that you are in, or correct apiBase "
                        "in panel.json.\n");
  EXPECT_EQ(Session(), before);
  EXPECT_FALSE(Exists(box.runtime() + L"\\session.json.new"));
}

// Each as it comes over the wire; the simulated machine has the whole table.
TEST_F(PanelAccount, APanelThatFailsCostsNoSession) {
  const std::string before = Session();
  for (const char* how : {"cut", "reset", "close", "garbage"}) {
    panel.Behave({{"path", "/api/v1/passport/auth/login"}, {"do", how}, {"times", 2}});
    const nlohmann::json reply =
        RunJson(std::string("login ") + kEmail + " --password-stdin", 1, kPassword);
    EXPECT_FALSE(reply.at("error").get<std::string>().empty()) << how;
    EXPECT_EQ(Session(), before) << how;
  }
  panel.SetTls("untrusted");
  EXPECT_EQ(RunJson("plans", 1).at("error"), "面板安全连接失败（证书或加密通道）。");
  panel.SetPort("https", false);
  EXPECT_EQ(RunJson("account", 1).at("error"), "无法连上面板服务器。");
  EXPECT_EQ(Session(), before);
}

std::string AccessListOf(const std::wstring& path) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  LPWSTR text = nullptr;
  std::wstring name = path;
  EXPECT_EQ(GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                  nullptr, nullptr, nullptr, &descriptor),
            DWORD{ERROR_SUCCESS});
  EXPECT_NE(ConvertSecurityDescriptorToStringSecurityDescriptorW(
                descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr),
            FALSE);
  std::string list = standins::ToUtf8(text);
  LocalFree(text);
  LocalFree(descriptor);
  return list;
}

TEST_F(PanelAccount, TheDevicesIdentityIsForTheUserAndTheSystem) {
  Run("device", 0);
  const std::string identity = ReadText(box.runtime() + L"\\device.id");
  EXPECT_EQ(identity.size(), 32u);
  // Others may read the panel's file, and not this one.
  EXPECT_NE(AccessListOf(box.runtime() + L"\\panel.json").find(";;;WD)"), std::string::npos);
  const std::string list = AccessListOf(box.runtime() + L"\\device.id");
  EXPECT_EQ(list.find(";;;WD)"), std::string::npos) << list;
  EXPECT_NE(list.find("(A;;FA;;;S-1-5-21-"), std::string::npos) << list;
  EXPECT_EQ(panel.User()["devices"], Json({identity}));
  EXPECT_EQ(Run("device", 0).find(identity), std::string::npos);
}

TEST_F(PanelAccount, WithoutAConsoleNobodyIsAsked) {
  EXPECT_EQ(Run("buy 2 month_price", 3), "");
  EXPECT_TRUE(errors.ends_with(
      "tavrinctl: there is no console to ask on; buy without a question with --yes\n"))
      << errors;
  EXPECT_TRUE(panel.State()["orders"].empty());
  Run(std::string("login ") + kEmail, 3);
}

}  // namespace
}  // namespace e2e
