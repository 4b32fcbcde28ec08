// What a connect refuses for the account's sake or the panel's, with its text; nothing is touched.
#include "tests/e2e/panel/service/panel_service_test.h"

namespace e2e {
namespace {

class PanelRefusals : public PanelServiceTest {};

TEST_F(PanelRefusals, SignedOut) {
  SignOut();
  StartService();
  ExpectRefused("请先登录");
  EXPECT_TRUE(panel.Requests().empty());
}

TEST_F(PanelRefusals, SessionThatThePanelHasDropped) {
  panel.SetUser({{"sessions", Json::array()}});
  StartCold();
  ExpectRefused("面板 HTTP 403");
  ExpectLines(panel.Sequence(), {"GET /api/v1/user/getSubscribe"});
}

TEST_F(PanelRefusals, NoPlan) {
  panel.SetUser({{"plan_id", nullptr}});
  StartCold();
  ExpectRefused("没有可用节点");
  ExpectLines(panel.Sequence(), {"GET /api/v1/user/getSubscribe"});
}

TEST_F(PanelRefusals, ExpiredPlan) {
  panel.SetUser({{"expired_at", 1700000000}});
  StartCold();
  ExpectRefused("没有可用节点");
  ExpectLines(panel.Sequence(), {"GET /api/v1/user/getSubscribe"});
}

TEST_F(PanelRefusals, AccountThatHasNodesAgainIsServedAtOnce) {
  panel.SetUser({{"expired_at", 1700000000}});
  StartCold();
  ExpectRefused("没有可用节点");
  panel.SetUser({{"expired_at", 4102329600}});
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
}

TEST_F(PanelRefusals, PanelWithoutNodes) {
  panel.Set({{"nodes", Json::array()}});
  StartCold();
  ExpectRefused("面板未下发可用节点，请确认节点已显示且套餐权限组一致");
}

TEST_F(PanelRefusals, NodesWithoutAddresses) {
  panel.Answer("/api/v1/client/subscribe", 500);
  StartCold();
  ExpectRefused("面板节点缺少地址，订阅里也没有可解析的 VLESS Reality");
}

TEST_F(PanelRefusals, PanelInTrouble) {
  panel.Answer("/api/v1/user/getSubscribe", 521);
  StartCold();
  ExpectRefused("面板 HTTP 521");
}

TEST_F(PanelRefusals, WebPageInsteadOfAPanel) {
  panel.Behave({{"path", "*"}, {"do", "html"}});
  StartCold();
  ExpectRefused("没有可用节点");
}

TEST_F(PanelRefusals, PanelThatIsDown) {
  Configure({{"apiBase", panel.nowhere()}});
  StartService();
  ExpectRefused("无法连上面板服务器。");
}

TEST_F(PanelRefusals, PanelThatNeverAnswers) {
  Configure({{"apiBase", panel.deaf()}});
  StartService();
  ExpectRefused("连接面板超时。请检查网络，或稍后再试。");
}

TEST_F(PanelRefusals, PanelOfAnUnknownName) {
  Configure({{"apiBase", "https://no-such-panel.invalid"}});
  StartService();
  ExpectRefused("无法解析面板域名。请检查网络或 DNS。");
}

TEST_F(PanelRefusals, PanelThatIsNone) {
  panel.Behave({{"path", "*"}, {"do", "garbage"}});
  StartService();
  ExpectRefused("面板返回了无法识别的内容。");
}

TEST_F(PanelRefusals, CertificateThatNobodyTrusts) {
  panel.SetTls("untrusted");
  Configure({{"apiBase", panel.https()}});
  StartService();
  ExpectRefused("面板安全连接失败（证书或加密通道）。");
  EXPECT_TRUE(panel.Requests().empty());
}

TEST_F(PanelRefusals, AddressWithoutAScheme) {
  Configure({{"apiBase", "panel.example/api"}});
  StartService();
  ExpectRefused("面板地址无效");
}

TEST_F(PanelRefusals, DamagedSessionFile) {
  WriteText(box.runtime() + L"\\session.json", "{\"email\":\"user@tavrin.example\",\"auth_da");
  StartService();
  ExpectRefused("请先登录");
}

}  // namespace
}  // namespace e2e
