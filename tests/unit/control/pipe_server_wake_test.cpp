#include "src/control/pipe_server.h"

#include <windows.h>

#include "src/runtime/process_state.h"
#include "tests/unit/product_state.h"

namespace vpn {
namespace {

class WakeControlPipeTest : public unit::ProductTest {
 protected:
  HANDLE CreateInstance() {
    return CreateNamedPipeW(L"\\\\.\\pipe\\TavrinService", PIPE_ACCESS_DUPLEX, 0, 8, 4096, 4096, 0,
                            nullptr);
  }
};

TEST_F(WakeControlPipeTest, OpensThePipeForBothDirectionsWithoutSharing) {
  WakeControlPipe();
  EXPECT_EQ(machine.calls.TextsOf("CreateFileW"),
            std::vector<std::string>{R"("\\.\pipe\TavrinService", 0xC0000000, 0, 3, 0x80)"});
}

TEST_F(WakeControlPipeTest, FlagIsSetBeforeTheConnection) {
  int seen = -1;
  machine.faults.Before("CreateFileW", 1, [&] { seen = g_stopRequested; });
  WakeControlPipe();
  EXPECT_EQ(seen, 1);
  EXPECT_EQ(g_stopRequested, 1);
}

TEST_F(WakeControlPipeTest, WithoutAServerTheFlagIsAllThatChanges) {
  WakeControlPipe();
  EXPECT_EQ(g_stopRequested, 1);
  EXPECT_EQ(machine.calls.Count("CloseHandle"), 0u);
}

TEST_F(WakeControlPipeTest, ConnectionIsClosedAtOnce) {
  const HANDLE server = CreateInstance();
  WakeControlPipe();
  EXPECT_EQ(machine.calls.TextsOf("CloseHandle"), std::vector<std::string>{"pipe client"});
  // A client was here, and has left.
  EXPECT_EQ(ConnectNamedPipe(server, nullptr), FALSE);
  EXPECT_EQ(GetLastError(), 232u);
  (void)CloseHandle(server);
}

TEST_F(WakeControlPipeTest, BusyServerIsLeftAlone) {
  const HANDLE server = CreateInstance();
  const HANDLE client = CreateFileW(L"\\\\.\\pipe\\TavrinService", GENERIC_READ, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
  WakeControlPipe();
  EXPECT_EQ(g_stopRequested, 1);
  EXPECT_EQ(machine.calls.Count("CloseHandle"), 0u);
  (void)CloseHandle(client);
  (void)CloseHandle(server);
}

}  // namespace
}  // namespace vpn
