// The way of a user: the account operations of the interface, and the service that finds what they
// leave behind.
#include "src/account/xboard_control_plane.h"
#include "tests/e2e/panel/service/panel_service_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

class PanelFlow : public PanelServiceTest {
 protected:
  vpn::XboardControlPlane Plane() const {
    return {standins::ToWide(panel.http()), box.runtime() + L"\\session.json", L"", L""};
  }

  // What a connect of a freshly started service says.
  std::string ConnectAnew() {
    StartService();
    return Ask(R"({"op":"connect"})");
  }
};

TEST_F(PanelFlow, LogInConnectRestartStillSignedInLogOut) {
  SignOut();
  std::wstring error;
  ASSERT_TRUE(Plane().login(L"user@tavrin.example", L"p+ss &wörd 密", error));
  const std::string credential = panel.User()["sessions"].back();
  ASSERT_NE(credential, kCredential);
  panel.ForgetRequests();
  EXPECT_EQ(ConnectAnew(), kUp);
  EXPECT_EQ(panel.Requests().at(0).headers.back(), "auth_data: " + credential);
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ShutDown();

  EXPECT_EQ(ConnectAnew(), kUp);
  ShutDown();

  EXPECT_TRUE(Plane().logout());
  EXPECT_EQ(ConnectAnew(), Refusal("请先登录"));
}

TEST_F(PanelFlow, RegisterBuyAPlanPayAndConnect) {
  SignOut();
  vpn::XboardControlPlane plane = Plane();
  std::wstring error;
  ASSERT_TRUE(plane.registerAccount(L"new@tavrin.example", L"secret-9", L"", L"", error));
  EXPECT_EQ(ConnectAnew(), Refusal("没有可用节点"));
  vpn::PurchaseResult purchase;
  ASSERT_TRUE(plane.purchasePlan(2, L"month_price", purchase, error));
  EXPECT_EQ(Ask(R"({"op":"connect"})"), Refusal("没有可用节点"));
  panel.Pay(standins::ToUtf8(purchase.tradeNo));
  bool paid = false;
  ASSERT_TRUE(plane.checkOrderPaid(purchase.tradeNo, paid, error));
  EXPECT_TRUE(paid);
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
}

}  // namespace
}  // namespace e2e
