// The client with an account on a living panel.
#include "tests/e2e/harness/client_run.h"
#include "tests/e2e/panel/service/panel_service_test.h"

namespace e2e {
namespace {

class PanelClientTest : public PanelServiceTest {
 protected:
  Json Run(const std::wstring& arguments, DWORD exitCode) {
    return ClientObject(box, arguments, exitCode);
  }
};

TEST_F(PanelClientTest, TheNodesAreThoseOfTheSubscription) {
  const Json nodes = Run(L"nodes", 0).at("nodes");
  ASSERT_GE(nodes.size(), 1u);
  EXPECT_EQ(nodes.at(0).at("address"), "203.0.113.9");
  EXPECT_EQ(nodes.at(0).at("port"), 443);
  EXPECT_EQ(panel.Requests().size(), kFetchSequence.size());
}

TEST_F(PanelClientTest, SignedOutTheTextOfThePanelsSideIsShown) {
  SignOut();
  EXPECT_EQ(Run(L"nodes", 1).at("error"), "请先登录");
}

TEST_F(PanelClientTest, TheDoctorReachesThePanelAndComparesTheClocks) {
  const Json finding = DoctorFinding(box, "panel");
  EXPECT_EQ(finding.at("text"), "127.0.0.1 answers, and the clocks agree");
  EXPECT_EQ(finding.at("verdict"), "good");
  EXPECT_EQ(DoctorFinding(box, "account").at("verdict"), "good");
}

TEST_F(PanelClientTest, AConnectByTheNodesName) {
  StartService();
  const std::string name = Run(L"nodes", 0).at("nodes").at(0).at("name");
  const Json reply = Run(L"connect --timeout 60", 0);
  EXPECT_EQ(reply.at("ok"), true);
  EXPECT_EQ(reply.at("node").at("name"), name);
}

}  // namespace
}  // namespace e2e
