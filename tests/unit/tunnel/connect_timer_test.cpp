#include "src/tunnel/connect_timer.h"

#include "tests/unit/net/net_fixture.h"

namespace unit {
namespace {

constexpr char kMark[] = "\xEF\xBB\xBF";  // what the runtime puts at the head of a new file

class ConnectTimers : public ProductTest {
 protected:
  ConnectTimers() { machine.files.PutDirectory(L"D:\\logs"); }

  void SetPath(const std::wstring& path) { machine.environment.Set(L"TAVRIN_TIMING", path); }
  // Without the byte-order mark, which the first line of a new file follows.
  std::string Trace(const std::wstring& path) const {
    const std::string content = machine.files.Read(path).value_or("no such file");
    return content.rfind(kMark, 0) == 0 ? content.substr(3) : content;
  }
  std::string DefaultTrace() const {
    return Trace(L"C:\\Program Files\\Tavrin\\connect-timing.log");
  }
};

TEST_F(ConnectTimers, ALineHoldsTheLabelTheStepAndTheTotalInFixedColumns) {
  vpn::ConnectTimer timer;
  machine.clock.Advance(12);
  timer.mark(L"stop() idle");
  machine.clock.Advance(3456);
  timer.mark(L"reset physical dns (netsh)");
  EXPECT_EQ(DefaultTrace(),
            "stop() idle                  +   12ms  total    12ms\r\n"
            "reset physical dns (netsh)   + 3456ms  total  3468ms\r\n");
}

TEST_F(ConnectTimers, TheFileIsUtf8TextWithTheRuntimesMarkAndLineEnds) {
  vpn::ConnectTimer timer;
  timer.mark(L"spawn xray");
  EXPECT_EQ(machine.files.Read(L"C:\\Program Files\\Tavrin\\connect-timing.log"),
            "\xEF\xBB\xBFspawn xray                   +    0ms  total     0ms\r\n");
  EXPECT_EQ(machine.calls.TextsOf("_wfopen_s"),
            Texts{"\"C:\\Program Files\\Tavrin\\connect-timing.log\", \"a, ccs=UTF-8\""});
}

TEST_F(ConnectTimers, TheFileIsOpenedAndClosedForEachMark) {
  vpn::ConnectTimer timer;
  EXPECT_EQ(machine.calls.Count("_wfopen_s"), 0u) << "construction writes nothing";
  timer.mark(L"one");
  EXPECT_EQ(machine.OpenHandles(), Texts());
  timer.mark(L"two");
  EXPECT_EQ(machine.calls.Count("_wfopen_s"), 2u);
}

TEST_F(ConnectTimers, TwoStartsFollowEachOtherWithoutASeparator) {
  { vpn::ConnectTimer().mark(L"first"); }
  machine.clock.Advance(5000);
  { vpn::ConnectTimer().mark(L"second"); }
  EXPECT_EQ(DefaultTrace(),
            "first                        +    0ms  total     0ms\r\n"
            "second                       +    0ms  total     0ms\r\n");
}

TEST_F(ConnectTimers, ALongPhaseWidensItsColumns) {
  vpn::ConnectTimer timer;
  machine.clock.Advance(99999);
  timer.mark(L"five digits");
  machine.clock.Advance(120000);
  timer.mark(L"six digits");
  EXPECT_EQ(DefaultTrace(),
            "five digits                  +99999ms  total 99999ms\r\n"
            "six digits                   +120000ms  total 219999ms\r\n");
}

TEST_F(ConnectTimers, FiguresGoBeyondThirtyTwoBits) {
  machine.clock.Set(0xFFFFFFF0);
  vpn::ConnectTimer timer;
  machine.clock.Advance(0x20);
  timer.mark(L"behind the wrap");
  machine.clock.Advance(0x100000000);
  timer.mark(L"fifty days later");
  EXPECT_EQ(DefaultTrace(),
            "behind the wrap              +   32ms  total    32ms\r\n"
            "fifty days later             +4294967296ms  total 4294967328ms\r\n");
}

TEST_F(ConnectTimers, AnEnvironmentVariableMovesTheTrace) {
  SetPath(L"D:\\logs\\trace.txt");
  vpn::ConnectTimer timer;
  timer.mark(L"there");
  EXPECT_EQ(Trace(L"D:\\logs\\trace.txt"),
            "there                        +    0ms  total     0ms\r\n");
  EXPECT_EQ(DefaultTrace(), "no such file");
  EXPECT_EQ(machine.calls.Count("GetModuleFileNameW"), 0u);
}

TEST_F(ConnectTimers, AnEmptyVariableMeansTheDefault) {
  SetPath(L"");
  vpn::ConnectTimer().mark(L"here");
  EXPECT_EQ(DefaultTrace(), "here                         +    0ms  total     0ms\r\n");
}

TEST_F(ConnectTimers, APathOf259CharactersFitsAndOneMoreSwitchesTheTraceOff) {
  const std::wstring longest = L"D:\\logs\\" + std::wstring(259 - 8, L't');
  SetPath(longest);
  vpn::ConnectTimer().mark(L"fits");
  EXPECT_EQ(Trace(longest), "fits                         +    0ms  total     0ms\r\n");

  SetPath(longest + L"t");
  vpn::ConnectTimer off;
  machine.calls.Clear();
  off.mark(L"lost");
  EXPECT_EQ(machine.calls.Names(), Texts()) << "not even the clock is read";
  EXPECT_EQ(DefaultTrace(), "no such file");
}

TEST_F(ConnectTimers, AnUnknownExecutableSwitchesTheTraceOff) {
  machine.faults.Fail("GetModuleFileNameW");
  vpn::ConnectTimer timer;
  machine.calls.Clear();
  timer.mark(L"lost");
  EXPECT_EQ(machine.calls.Names(), Texts());
}

TEST_F(ConnectTimers, TheDirectoryEndsAtTheLastSeparatorOfEitherKind) {
  machine.files.PutDirectory(L"D:\\a\\b");
  machine.modulePath = L"D:\\a/b/service.exe";
  vpn::ConnectTimer().mark(L"slash");
  EXPECT_EQ(machine.calls.TextsOf("_wfopen_s"),
            Texts{"\"D:\\a/b/connect-timing.log\", \"a, ccs=UTF-8\""});
  EXPECT_EQ(Trace(L"D:\\a\\b\\connect-timing.log"),
            "slash                        +    0ms  total     0ms\r\n");
}

TEST_F(ConnectTimers, AnExecutableWithoutADirectoryIsKeptWhole) {
  machine.modulePath = L"service.exe";
  vpn::ConnectTimer().mark(L"odd");
  EXPECT_EQ(machine.calls.TextsOf("_wfopen_s"),
            Texts{"\"service.execonnect-timing.log\", \"a, ccs=UTF-8\""});
}

TEST_F(ConnectTimers, ADirectoryThatDoesNotExistLosesAllLines) {
  SetPath(L"D:\\nowhere\\trace.txt");
  vpn::ConnectTimer timer;
  timer.mark(L"one");
  timer.mark(L"two");
  EXPECT_EQ(machine.calls.Count("_wfopen_s"), 2u);
  EXPECT_EQ(machine.files.List(L"D:\\"), Texts());
}

TEST_F(ConnectTimers, ALostLineStillMovesTheMark) {
  vpn::ConnectTimer timer;
  machine.clock.Advance(100);
  machine.faults.Fail("_wfopen_s");
  timer.mark(L"lost");
  machine.clock.Advance(7);
  timer.mark(L"written");
  EXPECT_EQ(DefaultTrace(), "written                      +    7ms  total   107ms\r\n");
}

TEST_F(ConnectTimers, TheTimeOfWritingCountsTowardTheNextLine) {
  machine.faults.Delay("_wfopen_s", 30);
  vpn::ConnectTimer timer;
  timer.mark(L"one");
  timer.mark(L"two");
  EXPECT_EQ(DefaultTrace(),
            "one                          +    0ms  total     0ms\r\n"
            "two                          +   30ms  total    30ms\r\n");
}

TEST_F(ConnectTimers, AFullDiskLosesTheLineAndNothingElse) {
  machine.files.Put(L"D:\\logs\\trace.txt", kMark);
  machine.files.SetWritesFail(L"D:\\logs\\trace.txt", true);
  SetPath(L"D:\\logs\\trace.txt");
  vpn::ConnectTimer().mark(L"lost");
  EXPECT_EQ(Trace(L"D:\\logs\\trace.txt"), "");
}

}  // namespace
}  // namespace unit
