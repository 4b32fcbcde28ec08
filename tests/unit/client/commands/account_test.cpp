#include "tests/unit/client/panel_account_test.h"

namespace vpn {
namespace {

constexpr char kAccount[] = "/api/v1/user/getSubscribe";

class AccountTest : public unit::PanelAccountTest {};

TEST_F(AccountTest, ShowsPlanTrafficAndDevices) {
  PutUser();
  EXPECT_EQ(Run({L"account"}), 0);
  EXPECT_EQ(Out(),
            "Account   new@mail.example\n"
            "Plan      标准版, until 2099-12-30\n"
            "Traffic   █░░░░░░░░░░░░░░░░░░░  10.0 GB of 200.0 GB\n"
            "Devices   3 at most\n"
            "Nodes     1\n");
  EXPECT_EQ(machine.http.Requests().size(), 2u);
  ExpectOldSession();
}

TEST_F(AccountTest, AsJson) {
  Get(kAccount, {.body = unit::kNoPlan});
  EXPECT_EQ(Run({L"account", L"--json"}), 0);
  EXPECT_EQ(Out(), R"({
  "schema": 1,
  "ok": true,
  "email": "new@mail.example",
  "plan": null,
  "traffic": {
    "used": 0,
    "total": 0
  },
  "devices": {
    "used": 0,
    "limit": 0
  },
  "nodes": 0
}
)");
}

TEST_F(AccountTest, WithoutAPlan) {
  Get(kAccount, {.body = unit::kNoPlan});
  EXPECT_EQ(Run({L"account"}), 0);
  EXPECT_EQ(Out(),
            "Account   new@mail.example\n"
            "Plan      none\n"
            "Devices   no limit\n"
            "Nodes     0\n");
}

TEST_F(AccountTest, APlanThatHasRunOut) {
  Get(kAccount,
      {.body =
           R"({"data":{"plan_id":2,"expired_at":1600000000,"email":"a@b.example","uuid":"7b1f","plan":{"id":2,"name":"标准版"}}})"});
  EXPECT_EQ(Run({L"account"}), 0);
  EXPECT_EQ(Out(),
            "Account   a@b.example\n"
            "Plan      标准版, ran out on 2020-09-13\n"
            "Devices   no limit\n"
            "Nodes     0\n");
}

TEST_F(AccountTest, WithoutNodesTheAccountIsShownAndTheReasonToo) {
  PutUser();
  Get("/api/v1/client/subscribe?token=0f1e", {.body = ""});
  Get("/api/v1/user/server/fetch", {.body = R"({"data":[]})"});
  EXPECT_EQ(Run({L"account", L"--json"}), 1);
  EXPECT_NE(Out().find("\"ok\": false,\n  \"email\": \"new@mail.example\""), std::string::npos);
  EXPECT_NE(Out().find("\"error\": \"面板未下发可用节点，请确认节点已显示且套餐权限组一致\""),
            std::string::npos);
  EXPECT_EQ(Err(),
            "面板未下发可用节点，请确认节点已显示且套餐权限组一致\n"
            "  What to do: on the panel: show the node, and put it into the plan's group.\n");
}

TEST_F(AccountTest, NodesSayWhenTheAddressIsNoPanels) {
  Get(kAccount, {.body = "<html>Welcome to our hotel</html>"});
  EXPECT_EQ(Run({L"nodes"}), 1);
  EXPECT_EQ(Err(),
            "没有可用节点\n"
            "  What to do: sign in to the network that you are in, or correct apiBase in "
            "panel.json: https://panel.example answers with a web page, not as a panel does.\n");
}

TEST_F(AccountTest, NodesOfAnAccountWithoutAPlan) {
  Get(kAccount, {.body = unit::kNoPlan});
  EXPECT_EQ(Run({L"nodes"}), 1);
  EXPECT_EQ(Err(),
            "没有可用节点\n"
            "  What to do: renew the plan, and see whether apiBase leads to a panel at all.\n");
}

TEST_F(AccountTest, TheAccountOfThisMachine) {
  machine.files.Remove(std::wstring(unit::kRuntime) + L"\\panel.json");
  PutAccount();
  EXPECT_EQ(Run({L"account"}), 0);
  EXPECT_EQ(Out(),
            "Account   someone@mail.example\n"
            "Plan      until 2999-12-31\n"
            "Devices   1 of 1\n"
            "Nodes     1\n");
}

TEST_F(AccountTest, ALogoutForgetsTheSession) {
  const std::wstring draft = std::wstring(unit::kRuntime) + L"\\session.json.new";
  machine.files.Put(draft, "left by a sign-in that was ended");
  EXPECT_EQ(Run({L"logout"}), 0);
  EXPECT_EQ(Session(), "(none)");
  EXPECT_FALSE(machine.files.Exists(draft));
  EXPECT_EQ(Run({L"logout"}), 0);
  EXPECT_EQ(Out(), "Signed out.\nNobody was signed in.\n");
  EXPECT_EQ(Run({L"account"}), 1);
  EXPECT_EQ(Err(), "请先登录\n  What to do: sign in.\n");
  EXPECT_TRUE(machine.http.Requests().empty());
}

TEST_F(AccountTest, ALogoutThatMayNotDeleteTheFile) {
  machine.files.SetReadOnly(unit::kRuntime, true);
  EXPECT_EQ(Run({L"logout", L"--json"}), 1);
  EXPECT_EQ(Out(),
            "{\n  \"schema\": 1,\n  \"ok\": false,\n"
            "  \"error\": \"session.json can't be deleted\"\n}\n");
  EXPECT_EQ(Err(),
            "session.json can't be deleted\n"
            "  What to do: run this from an elevated console: this user may not write to "
            "C:\\Program Files\\Tavrin\\runtime.\n");
  ExpectOldSession();
}

}  // namespace
}  // namespace vpn
