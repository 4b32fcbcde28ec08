#include "src/control/tunnel_instance.h"

#include <atomic>
#include <chrono>
#include <thread>

#include "src/control/connect_operation.h"
#include "tests/unit/control/control_fixture.h"

namespace vpn {
namespace {

class StopTunnelTest : public unit::ControlTest {};

TEST_F(StopTunnelTest, IdleTunnelCostsNoPlatformCall) {
  StopTunnel();
  EXPECT_EQ(machine.calls.Names(), std::vector<std::string>());
}

TEST_F(StopTunnelTest, RunningTunnelIsTakenDown) {
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  StopTunnel();
  EXPECT_EQ(Alive(), std::vector<std::string>());
  EXPECT_FALSE(HasRoute("198.51.100.7", 32));
}

TEST_F(StopTunnelTest, WaitsForTheLock) {
  std::atomic<bool> stopped{false};
  std::thread stopper;
  {
    const MutexLock lock(g_tunnelLock);
    stopper = std::thread([&] {
      StopTunnel();
      stopped = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(stopped);
  }
  stopper.join();
  EXPECT_TRUE(stopped);
}

}  // namespace
}  // namespace vpn
