// The daemon's owner: whom it watches, and what it makes of a number that is no owner's.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/owner.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr char kStatus[] = R"({"op":"status"})";

class OwnerOfADaemon : public ServiceTest {
 protected:
  void StartDaemon(const std::wstring& owner) {
    Launch(box.serviceExe(),
           L"--daemon --owner-pid " + owner + L" --runtime \"" + box.runtime() + L"\"");
  }
  Lines LogWith(const Lines& lines) const {
    Lines log = {"daemon mode. runtime=" + standins::ToUtf8(box.runtime())};
    log.insert(log.end(), lines.begin(), lines.end());
    return log;
  }
  void ExpectNoOwner(const std::wstring& value) {
    StartDaemon(value);
    EXPECT_EQ(Ask(kStatus), kDown);
    ShutDown();
    ExpectLines(ServiceLog(), LogWith({"ipc op=status", "ipc op=shutdown", "daemon stopped"}));
  }
  // There is a watch, and it has nobody to watch: the daemon stays until it is told to go.
  void ExpectOwnerIsGone(const std::wstring& value) {
    StartDaemon(value);
    WaitUntil("the watch gives up", [this] { return ServiceLog().size() == 2; });
    EXPECT_EQ(Ask(kStatus), kDown);
    ShutDown();
    ExpectLines(ServiceLog(), LogWith({"owner pid open failed err=87", "ipc op=status",
                                       "ipc op=shutdown", "daemon stopped"}));
  }
};

TEST_F(OwnerOfADaemon, DaemonStaysWhileItLives) {
  Owner owner(box, machine);
  StartDaemon(std::to_wstring(owner.pid()));
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ASSERT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  EXPECT_EQ(Ask(kStatus), kDown);
  ShutDown();
  ExpectLines(ServiceLog(), LogWith({"ipc op=connect", "ipc op=disconnect", "ipc op=status",
                                     "ipc op=shutdown", "daemon stopped"}));
}

TEST_F(OwnerOfADaemon, ItsEndTakesTheTunnelDownBeforeTheProcessEnds) {
  Owner owner(box, machine);
  StartDaemon(std::to_wstring(owner.pid()));
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const HANDLE xray = machine.OpenLast("xray.exe");
  const HANDLE tun2socks = machine.OpenLast("tun2socks-windows-amd64.exe");
  owner.End();
  EXPECT_EQ(service().WaitForExitCode(), 0U);
  ExpectEnds(xray);
  ExpectEnds(tun2socks);
  ExpectLines(ServiceLog(),
              LogWith({"ipc op=connect", "ui process exited; stopping helper", "daemon stopped"}));
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

TEST_F(OwnerOfADaemon, GoneAlready) {
  Owner owner(box, machine);
  owner.End();
  owner.Forget();
  WaitUntil("the owner's number is free", [&owner] {
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, owner.pid());
    if (process == nullptr) return true;
    CloseHandle(process);
    return false;
  });
  ExpectOwnerIsGone(std::to_wstring(owner.pid()));
}

TEST_F(OwnerOfADaemon, Zero) {
  ExpectNoOwner(L"0");
}

TEST_F(OwnerOfADaemon, NotANumber) {
  ExpectNoOwner(L"abc");
}

TEST_F(OwnerOfADaemon, Empty) {
  ExpectNoOwner(L"\"\"");
}

// Read as a signed number and kept as an unsigned one, it is a process that nobody has.
TEST_F(OwnerOfADaemon, Negative) {
  ExpectOwnerIsGone(L"-4");
}

// The platform's reading of numbers stops at the greatest that 32 bits with a sign can hold.
TEST_F(OwnerOfADaemon, LargerThan32Bits) {
  ExpectOwnerIsGone(L"4294967300");
}

}  // namespace
}  // namespace e2e
