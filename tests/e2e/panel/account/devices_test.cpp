// Registering computers against the plan's device limit.
#include "tests/e2e/panel/account/account_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

class Devices : public AccountTest {
 protected:
  Devices() { deviceApi = apiBase + L"/device"; }

  bool Claim(const wchar_t* device) {
    used = 77;
    limit = 77;
    error.clear();
    vpn::XboardControlPlane plane = SignedIn();
    return plane.claimDevice(device, used, limit, error);
  }

  void ExpectClaimed(const wchar_t* device, std::int32_t expectedUsed) {
    EXPECT_TRUE(Claim(device)) << standins::ToUtf8(error);
    EXPECT_EQ(used, expectedUsed);
    EXPECT_EQ(limit, 2);
  }

  std::int32_t used = 77;
  std::int32_t limit = 77;
};

TEST_F(Devices, ToTheLimitAndPastIt) {
  panel.SetUser({{"device_limit", 2}});
  ExpectClaimed(L"machine-1", 1);
  ExpectClaimed(L"电脑-2", 2);
  ExpectClaimed(L"machine-1", 2);  // again, which takes no further place
  EXPECT_FALSE(Claim(L"machine-3"));
  EXPECT_EQ(error, L"设备数量已达上限（2 台）");
  EXPECT_EQ(used, 0);
  EXPECT_EQ(limit, 0);
  EXPECT_EQ(panel.User()["devices"], Json({"machine-1", "电脑-2"}));
}

TEST_F(Devices, CountsAtTheTopLevelAndInsideTheDataAreRead) {
  panel.Answer("/device/claim", 200, R"({"used":9,"limit":5,"data":{"used":4}})");
  EXPECT_TRUE(Claim(L"machine-1"));
  EXPECT_EQ(used, 4);
  EXPECT_EQ(limit, 5);
}

TEST_F(Devices, WithoutADeviceServiceAllIsAllowed) {
  deviceApi.clear();
  vpn::XboardControlPlane plane = Restart();
  EXPECT_TRUE(plane.claimDevice(L"", used, limit, error));
  EXPECT_EQ(used, 0);
  EXPECT_EQ(limit, 0);
  EXPECT_TRUE(panel.Requests().empty());
}

TEST_F(Devices, SignedOutComesBeforeABadId) {
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.claimDevice(L"unknown-device", used, limit, error));
  EXPECT_EQ(error, L"请先登录");
  EXPECT_TRUE(panel.Requests().empty());
}

TEST_F(Devices, ComputerWithoutAnId) {
  for (const wchar_t* id : {L"", L"unknown-device"}) {
    EXPECT_FALSE(Claim(id));
    EXPECT_EQ(error, L"无法识别这台电脑");
  }
  EXPECT_TRUE(panel.Requests().empty());
}

TEST_F(Devices, ServiceThatIsDown) {
  deviceApi = standins::ToWide(panel.nowhere());
  EXPECT_FALSE(Claim(L"machine-1"));
  EXPECT_EQ(error, L"无法连上面板服务器。");
}

TEST_F(Devices, DroppedSession) {
  panel.SetUser({{"sessions", Json::array()}});
  EXPECT_FALSE(Claim(L"machine-1"));
  EXPECT_EQ(error, L"未登录或登陆已过期");
}

}  // namespace
}  // namespace e2e
