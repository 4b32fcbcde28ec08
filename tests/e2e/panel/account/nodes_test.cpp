// The account's state and its nodes.
#include "tests/e2e/panel/account/account_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr char kSubscribe[] = "/api/v1/client/subscribe";
constexpr char kServers[] = "/api/v1/user/server/fetch";
constexpr wchar_t kNoNodes[] = L"面板未下发可用节点，请确认节点已显示且套餐权限组一致";
constexpr wchar_t kNoAddress[] = L"面板节点缺少地址，订阅里也没有可解析的 VLESS Reality";

class Nodes : public AccountTest {
 protected:
  bool Fetch() {
    error.clear();
    vpn::XboardControlPlane plane = SignedIn();
    return plane.fetchAccount(session, error);
  }

  void ExpectNoneAndNoFurtherRequest() {
    EXPECT_TRUE(Fetch()) << standins::ToUtf8(error);
    EXPECT_TRUE(session.nodes.empty());
    ExpectLines(panel.Sequence(), {"GET /api/v1/user/getSubscribe"});
  }

  Lines NodeLines() const {
    Lines lines;
    for (const vpn::NodeInfo& node : session.nodes) {
      lines.push_back(standins::ToUtf8(node.name + L" | " + node.address + L":" +
                                       std::to_wstring(node.port) + L" | " + node.uuid + L" | " +
                                       node.flow + L" | " + node.sni + L" | " + node.fingerprint +
                                       L" | " + node.publicKey + L" | " + node.shortId));
    }
    return lines;
  }

  vpn::AccountSession session;
};

TEST_F(Nodes, AccountAndSubscriptionAreRead) {
  ASSERT_TRUE(Fetch());
  EXPECT_TRUE(session.loggedIn);
  EXPECT_TRUE(session.hasPlan);
  EXPECT_FALSE(session.expired);
  EXPECT_EQ(session.email, L"user@tavrin.example");
  EXPECT_EQ(session.planName, L"标准版");
  EXPECT_EQ(session.planId, 2);
  EXPECT_EQ(session.deviceLimit, 3);
  EXPECT_EQ(session.deviceUsed, 0);
  EXPECT_EQ(session.expiresAt, 4102329600);
  EXPECT_EQ(session.expiryDate, L"2099-12-30");  // in UTC; where the panel stands it is the 31st
  EXPECT_EQ(session.transferEnable, 214748364800);
  EXPECT_EQ(session.transferUsed, 10737418240);
  ExpectLines(
      NodeLines(),
      {"东京 01 | 203.0.113.9:443 | 7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11 | xtls-rprx-vision | "
       "www.tokyo.example | chrome | Zm9yLXRlc3RzLW9ubHktbm90LWEtcmVhbC1rZXktISE | "
       "0123456789abcdef",
       "香港 02 | 中转 | 203.0.113.20:8443 | 7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11 | "
       "xtls-rprx-vision | www.hongkong.example | firefox | "
       "YW5vdGhlci10ZXN0LWtleS1ub3QtcmVhbC1laXRoZXI | a1b2",
       "新加坡 03 | 203.0.113.30:443 | 7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11 | xtls-rprx-vision | "
       "www.singapore.example | safari | dGhlLXRoaXJkLXRlc3Qta2V5LWlzLW5vdC1yZWFsLS0 | "});
}

TEST_F(Nodes, QuotedNumbersOfOldPanelsAreReadAlike) {
  panel.Set({{"family", "v2board"}, {"quotedNumbers", true}});
  ASSERT_TRUE(Fetch());
  EXPECT_EQ(session.planId, 2);
  EXPECT_EQ(session.deviceLimit, 3);
  EXPECT_EQ(session.expiresAt, 4102329600);
  EXPECT_EQ(session.transferUsed, 10737418240);
  EXPECT_EQ(session.nodes.size(), 3U);
}

TEST_F(Nodes, NoticesAreLeftOut) {
  panel.Set({{"noticeNodes", true}});
  ASSERT_TRUE(Fetch());
  ASSERT_EQ(session.nodes.size(), 3U);
  EXPECT_EQ(session.nodes[0].name, L"东京 01");
}

TEST_F(Nodes, RealNodeWithTheWordsOfANoticeIsLeftOutToo) {
  Json nodes = panel.State()["nodes"];
  nodes[2]["name"] = "香港 03（已过滤掉广告）";
  panel.Set({{"nodes", nodes}});
  ASSERT_TRUE(Fetch());
  EXPECT_EQ(session.nodes.size(), 2U);
}

TEST_F(Nodes, AddressFromThePanelServesWithoutAToken) {
  panel.Set({{"subscriptionToken", false},
             {"subscribeUrl", panel.http() + "/api/v1/client/subscribe?token="}});
  ASSERT_TRUE(Fetch());
  EXPECT_EQ(session.nodes.size(), 3U);
  EXPECT_EQ(panel.Requests().size(), 2U);
}

TEST_F(Nodes, NoPlan) {
  panel.SetUser({{"plan_id", nullptr}});
  ExpectNoneAndNoFurtherRequest();
  EXPECT_FALSE(session.hasPlan);
  EXPECT_TRUE(session.loggedIn);
}

TEST_F(Nodes, ExpiredPlan) {
  panel.SetUser({{"expired_at", 1700000000}});
  ExpectNoneAndNoFurtherRequest();
  EXPECT_TRUE(session.expired);
  EXPECT_EQ(session.expiryDate, L"2023-11-14");
}

TEST_F(Nodes, EndlessPlan) {
  panel.SetUser({{"expired_at", nullptr}});
  ASSERT_TRUE(Fetch());
  EXPECT_EQ(session.expiryDate, L"");
  EXPECT_EQ(session.nodes.size(), 3U);
}

// For the panel a zero is a plan that has run out, for this client an endless one.
TEST_F(Nodes, ExpiryOfZero) {
  panel.SetUser({{"expired_at", 0}});
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, kNoNodes);
  EXPECT_FALSE(session.expired);
}

TEST_F(Nodes, AccountThatThePanelCountsAsUnavailable) {
  panel.SetUser({{"banned", true}});
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, kNoNodes);
  EXPECT_EQ(panel.Requests().size(), 3U);
}

TEST_F(Nodes, ServerListOfTodaysPanelsIsNoFallBack) {
  panel.Answer(kSubscribe, 500);
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, kNoAddress);
}

TEST_F(Nodes, ServerListWithWholeRowsServes) {
  panel.Set({{"family", "v2board"}, {"wholeServerRows", true}});
  panel.Answer(kSubscribe, 500);
  ASSERT_TRUE(Fetch());
  const Lines lines = NodeLines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[1],
            "香港 02 | 中转 | 203.0.113.20:8443 | 7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11 | "
            "xtls-rprx-vision | www.hongkong.example | firefox | "
            "YW5vdGhlci10ZXN0LWtleS1ub3QtcmVhbC1laXRoZXI | a1b2");
}

TEST_F(Nodes, OtherKindsOfServersAreLeftOut) {
  Json nodes = panel.State()["nodes"];
  nodes[0]["type"] = "trojan";
  nodes[1]["type"] = "VLESS";
  nodes[2]["type"] = "shadowsocks";
  panel.Set({{"nodes", nodes}, {"wholeServerRows", true}});
  panel.Answer(kSubscribe, 200);
  ASSERT_TRUE(Fetch());
  ASSERT_EQ(session.nodes.size(), 1U);
  EXPECT_EQ(session.nodes[0].name, L"香港 02 | 中转");
}

TEST_F(Nodes, BothSourcesFailAndTheFirstIsNamed) {
  panel.Answer(kSubscribe, 502);
  panel.Answer(kServers, 500);
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板 HTTP 502");
}

TEST_F(Nodes, EmptySubscriptionAndAServerListThatFails) {
  panel.Answer(kSubscribe, 200);
  panel.Answer(kServers, 500);
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板 HTTP 500");
}

TEST_F(Nodes, PanelWithoutNodes) {
  panel.Set({{"nodes", Json::array()}});
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, kNoNodes);
}

TEST_F(Nodes, WebPageReadsAsAnAccountWithoutAPlan) {
  panel.Behave({{"path", "*"}, {"do", "html"}});
  ExpectNoneAndNoFurtherRequest();
  EXPECT_EQ(session.email, L"user@tavrin.example");
}

}  // namespace
}  // namespace e2e
