// Where the account's nodes come from: the subscription, and else the panel's server list.
#include <string>

#include "tests/unit/account/xboard_test.h"

namespace vpn {
namespace {

class Nodes : public XboardTest {
 protected:
  // An account with a plan and a uuid, and these fields.
  void OnAccount(const std::string& fields) {
    OnGet("user/getSubscribe", R"({"data":{"plan_id":1,"uuid":"the-uuid",)" + fields + "}}");
  }
  void OnSubscription(sim::HttpAnswer answer) {
    OnGet("client/subscribe?token=t", std::move(answer));
  }
  void OnServers(sim::HttpAnswer answer) { OnGet("user/server/fetch", std::move(answer)); }
  bool Fetch() { return panel().fetchAccount(session, error); }

  // What the three requests look like; the subscription goes without the credential.
  const std::string kAccount = SignedGet("user/getSubscribe");
  const std::string kServers = SignedGet("user/server/fetch");
  static std::string Subscription(const std::string& url) {
    return "GET " + url + "\r\nAccept: application/json\r\nUser-Agent: v2rayN/6.45\r\n\r\n";
  }
  const std::string kLink = "vless://id@hk.example:443?pbk=k#one\n";
  const std::string kServer =
      R"({"data":[{"type":"vless","name":"two","host":"jp.example","port":443,"public_key":"k"}]})";
  const std::string kTokenUrl = "https://panel.example/api/v1/client/subscribe?token=t";

  AccountSession session;
};

TEST_F(Nodes, OfTheSubscriptionAreEnough) {
  OnAccount(R"("token":"t")");
  OnSubscription(Ok(kLink));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(error, L"");
  ASSERT_EQ(session.nodes.size(), 1u);
  EXPECT_EQ(session.nodes[0].name, L"one");
  EXPECT_EQ(session.nodes[0].uuid, L"id");
  EXPECT_EQ(Sent(), (Texts{kAccount, Subscription(kTokenUrl)}));
}

TEST_F(Nodes, AreNotAskedForWithoutPlanOrUuidOrAfterTheExpiry) {
  for (const char* fields :
       {R"("plan_id":0,"uuid":"u")", R"("uuid":"u")", R"("plan_id":1,"uuid":"")", R"("plan_id":1)",
        R"("plan_id":1,"uuid":"u","expired_at":1700000000)"}) {
    machine.http.Forget();
    session.nodes.resize(2);
    OnGet("user/getSubscribe", R"({"data":{"token":"t",)" + std::string(fields) + "}}");
    EXPECT_TRUE(Fetch());
    EXPECT_TRUE(session.loggedIn);
    EXPECT_TRUE(session.nodes.empty());
    EXPECT_EQ(Paths(), Texts{"GET user/getSubscribe"});
    EXPECT_EQ(error, L"");
  }
}

TEST_F(Nodes, TheTokenDecidesOverTheSubscriptionAddress) {
  OnAccount(R"("token":"t","subscribe_url":"https:\/\/other.example\/s\/x")");
  OnSubscription(Ok(kLink));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Paths(), (Texts{"GET user/getSubscribe", "GET client/subscribe?token=t"}));
}

TEST_F(Nodes, TheTokenIsNotEncoded) {
  OnAccount(R"("token":"a b&c=d\/\u4e2d")");
  OnServers(Ok(kServer));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Paths().at(1), "GET client/subscribe?token=a b&c=d/中");
}

TEST_F(Nodes, WithoutATokenTheSubscriptionAddressIsFetchedAsItIs) {
  OnAccount(R"("token":"","subscribe_url":"https:\/\/other.example\/s\/x?y=1")");
  machine.http.OnNext("GET", "https://other.example/s/x?y=1", Ok(kLink));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Sent(), (Texts{kAccount, Subscription("https://other.example/s/x?y=1")}));
}

TEST_F(Nodes, TheSubscriptionAddressIsReadByItsKey) {
  OnAccount(
      R"("token":"","other":"https:\/\/no.example","subscribe_url":"https:\/\/s.example\/x")");
  machine.http.OnNext("GET", "https://s.example/x", Ok(kLink));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Sent(), (Texts{kAccount, Subscription("https://s.example/x")}));
}

TEST_F(Nodes, WithNeitherTheServerListServes) {
  OnAccount(R"("token":null,"subscribe_url":"")");
  OnServers(Ok(kServer));
  EXPECT_TRUE(Fetch());
  ASSERT_EQ(session.nodes.size(), 1u);
  EXPECT_EQ(session.nodes[0].name, L"two");
  EXPECT_EQ(session.nodes[0].uuid, L"the-uuid");
  EXPECT_EQ(Sent(), (Texts{kAccount, kServers}));
  EXPECT_EQ(error, L"");
}

TEST_F(Nodes, TheServersAreThoseOfTheKeyData) {
  OnAccount(R"("token":"")");
  OnServers(Ok(R"({"message":"","old":[{"host":"no","port":1,"public_key":"k"}],)"
               R"("data":[{"host":"yes","port":1,"public_key":"k"}]})"));
  EXPECT_TRUE(Fetch());
  ASSERT_EQ(session.nodes.size(), 1u);
  EXPECT_EQ(session.nodes[0].address, L"yes");
}

TEST_F(Nodes, ASubscriptionThatFailsIsNotFatalAndItsTextMayRemain) {
  OnAccount(R"("token":"t")");
  OnSubscription(Refusal(403));
  OnServers(Ok(kServer));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(session.nodes.size(), 1u);
  EXPECT_EQ(error, L"面板 HTTP 403");
}

TEST_F(Nodes, OfAFailedSubscriptionsBodyAreNotRead) {
  OnAccount(R"("token":"t")");
  OnSubscription(Refusal(403, kLink));
  OnServers(Ok(kServer));
  EXPECT_TRUE(Fetch());
  ASSERT_EQ(session.nodes.size(), 1u);
  EXPECT_EQ(session.nodes[0].name, L"two");
}

TEST_F(Nodes, ASubscriptionThatFailsLeavesAnEarlierText) {
  error = L"earlier";
  OnAccount(R"("token":"t")");
  OnSubscription(Refusal(403));
  OnServers(Ok(kServer));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(error, L"earlier");
}

TEST_F(Nodes, WhenBothFailTheSubscriptionsTextIsShown) {
  OnAccount(R"("token":"t")");
  OnSubscription(Unreachable(12002));
  OnServers(Refusal(500));
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"连接面板超时。请检查网络，或稍后再试。");
  EXPECT_TRUE(session.loggedIn);
  EXPECT_TRUE(session.hasPlan);
}

TEST_F(Nodes, WhenTheSubscriptionIsEmptyAndTheListFailsTheListsTextIsShown) {
  OnAccount(R"("token":"t")");
  OnSubscription(Ok(""));
  OnServers(Refusal(500));
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板 HTTP 500");
}

// Only the subscription's own text stands against the list's, not one that the caller brought.
TEST_F(Nodes, TheListsTextReplacesOneThatTheCallerBrought) {
  for (const sim::HttpAnswer& subscription : {Ok(""), Refusal(403)}) {
    error = L"earlier";
    OnAccount(R"("token":"t")");
    OnSubscription(subscription);
    OnServers(Refusal(500));
    EXPECT_FALSE(Fetch());
    EXPECT_EQ(error, L"面板 HTTP 500");
  }
}

TEST_F(Nodes, AnEmptyServerListHasALineOfItsOwn) {
  for (const char* list : {R"({"data":[]})", "", "<html></html>", R"({"data":null})"}) {
    error = L"earlier";
    OnAccount(R"("token":"t")");
    OnSubscription(Ok(""));
    OnServers(Ok(list));
    EXPECT_FALSE(Fetch());
    EXPECT_EQ(error, L"面板未下发可用节点，请确认节点已显示且套餐权限组一致");
  }
}

TEST_F(Nodes, AServerListOfUnusableEntriesHasAnother) {
  for (const char* list :
       {R"({"data":[{"type":"trojan","name":"n","host":"h","port":443,"public_key":"k"}]})",
        R"({"data":[{"id":1,"type":"vless","version":null,"name":"n","rate":"1","tags":null,)"
        R"("is_online":1,"cache_key":"vless-1","last_check_at":1749988800}]})",
        R"({"data":[{"host":"h","port":0,"public_key":"k"}]})", R"({"data":[{}]})"}) {
    OnAccount(R"("token":"t")");
    OnSubscription(Ok(""));
    OnServers(Ok(list));
    EXPECT_FALSE(Fetch());
    EXPECT_EQ(error, L"面板节点缺少地址，订阅里也没有可解析的 VLESS Reality");
    EXPECT_TRUE(session.nodes.empty());
  }
}

// A banned account: the subscription's 403 is overwritten.
TEST_F(Nodes, TheServerListsOwnLinesOverwriteTheSubscriptionsText) {
  OnAccount(R"("token":"t")");
  OnSubscription(Refusal(403));
  OnServers(Ok(R"({"data":[]})"));
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板未下发可用节点，请确认节点已显示且套餐权限组一致");
}

TEST_F(Nodes, ASubscriptionOfNoticesAloneCountsAsEmpty) {
  OnAccount(R"("token":"t")");
  OnSubscription(Ok("vless://id@hk.example:443?pbk=k#剩余流量：189.8 GB\n"));
  OnServers(Ok(kServer));
  EXPECT_TRUE(Fetch());
  ASSERT_EQ(session.nodes.size(), 1u);
  EXPECT_EQ(session.nodes[0].name, L"two");
}

TEST_F(Nodes, AnExpiryIn0SecondsIsEndlessForUsWhateverThePanelThinks) {
  OnAccount(R"("token":"t","expired_at":0)");
  OnSubscription(Ok(""));
  OnServers(Ok(R"({"data":[]})"));
  EXPECT_FALSE(Fetch());
  EXPECT_FALSE(session.expired);
  EXPECT_EQ(error, L"面板未下发可用节点，请确认节点已显示且套餐权限组一致");
}

// The token in the reply is refused where links are good for one use; the only good one stands in
// the address that is ignored.
TEST_F(Nodes, AOneTimeLinkIsNotUsedWhereThereIsAToken) {
  OnAccount(R"("token":"t","subscribe_url":"https:\/\/panel.example\/s\/once")");
  OnSubscription(Refusal(403));
  OnServers(Ok(kServer));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(Paths(), (Texts{"GET user/getSubscribe", "GET client/subscribe?token=t",
                            "GET user/server/fetch"}));
}

TEST_F(Nodes, ThreeStrayBracesInThePlansTextCostNothingHere) {
  OnGet(
      "user/getSubscribe",
      R"({"data":{"plan_id":1,"uuid":"the-uuid","token":"t","plan":{"name":"A","content":"{{{"}}})");
  OnSubscription(Ok(kLink));
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(session.planName, L"");
  EXPECT_EQ(session.nodes.size(), 1u);
}

TEST_F(Nodes, EachRequestRunsToItsOwnTimeOut) {
  OnAccount(R"("token":"t")");
  OnSubscription({.receiveTime = 20000});
  OnServers({.receiveTime = 20000});
  const std::uint64_t start = machine.clock.Now();
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(machine.clock.Now() - start, 40000u);
  EXPECT_EQ(error, L"连接面板超时。请检查网络，或稍后再试。");
}

}  // namespace
}  // namespace vpn
