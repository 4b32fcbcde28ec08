// The service log: every line that there is, characters outside ASCII, and a place that takes no
// log.
#include <regex>

#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/installed_service_test.h"
#include "tests/e2e/harness/owner.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr char kStatus[] = R"({"op":"status"})";
constexpr wchar_t kOddRuntime[] = L"Laufzeit \u00e4 \u8fd0\u884c";

class ServiceLogOf : public InstalledServiceTest {
 protected:
  ServiceLogOf() : InstalledServiceTest(kOddRuntime) {}
  std::wstring RuntimeOption() const { return L" --runtime \"" + box.runtime() + L"\""; }
  std::string Runtime() const { return standins::ToUtf8(box.runtime()); }
  // The codes of the pipe are the platform's affair.
  Lines LogWithoutPipeCodes() const {
    static const std::regex code("^(ipc (read|write reply) failed err=)[0-9]+$");
    Lines log = ServiceLog();
    for (std::string& line : log) line = std::regex_replace(line, code, "$1N");
    return log;
  }
  // Of a run in console mode, two as a daemon and one as a service.
  Lines EveryLine() const {
    return {
        "TavrinService console mode. Pipe \\\\.\\pipe\\TavrinService",
        "Runtime " + Runtime(),
        "Ctrl+C to stop.",
        "ipc read failed err=N",
        "ipc op=restart",
        "ipc error=op not allowed",
        "ipc op=connect",
        "ipc write reply failed err=N",
        "ipc op=shutdown",
        "stopped.",
        "daemon mode. runtime=" + Runtime(),
        "owner pid open failed err=87",
        "ipc op=shutdown",
        "daemon stopped",
        "daemon mode. runtime=" + Runtime(),
        "ipc op=status",
        "ui process exited; stopping helper",
        "daemon stopped",
        "service running. runtime=" + Runtime(),
        "ipc op=shutdown",
        "service stopped",
    };
  }
  void LeaveWithinTheLength() {
    PipeClient client;
    client.Write(LengthPrefix(15).substr(0, 2));
    client.WaitUntilRead();
    client.Close();
  }
  void LeaveBeforeTheReply() {
    machine.Edit([](standins::MachineState& state) { state.heldCall = "GetIpForwardTable2"; });
    machine.ForgetCalls();
    PipeClient client;
    client.Write(Frame(R"({"op":"connect"})"));
    WaitUntil("the connect is under way", [this] { return !machine.Calls().empty(); });
    client.Close();
    machine.Edit([](standins::MachineState& state) { state.heldCall.clear(); });
  }
};

TEST_F(ServiceLogOf, AllModesHoldsEveryLineThereIs) {
  StartService();
  LeaveWithinTheLength();
  ASSERT_EQ(Ask(R"({"op":"restart"})"), Refusal("op not allowed"));
  LeaveBeforeTheReply();
  ShutDown();
  Launch(box.serviceExe(), L"--daemon --owner-pid 2147483644" + RuntimeOption());
  WaitUntil("the watch gives up", [this] { return ServiceLog().size() == 12; });
  ShutDown();
  Owner owner(box, machine);
  Launch(box.serviceExe(),
         L"--daemon --owner-pid " + std::to_wstring(owner.pid()) + RuntimeOption());
  ASSERT_EQ(Ask(kStatus), kDown);
  owner.End();
  ASSERT_EQ(service().WaitForExitCode(), 0U);
  Install();
  ASSERT_EQ(Ask(R"({"op":"shutdown"})"), kDown);
  ASSERT_EQ(Run(L"--uninstall"), 0U);
  ExpectLines(LogWithoutPipeCodes(), EveryLine());
  EXPECT_EQ(ReadText(box.serviceLog()).find('\r'), std::string::npos);
}

// Errors are text; an operation is bytes, of which each becomes a unit of its own.
TEST_F(ServiceLogOf, TextOutsideAsciiIsUtf8) {
  StartService();
  WriteText(box.runtime() + L"\\panel.json", R"({"apiBase":"http://127.0.0.1:1"})");
  RemoveFile(box.runtime() + L"\\session.json");
  EXPECT_EQ(Ask(R"({"op":"connect"})"), Refusal("请先登录"));
  EXPECT_EQ(Ask("{\"op\":\"\xC3\xA4\"}"), Refusal("op not allowed"));
  ShutDown();
  ExpectRun(ServiceLog(), {"ipc op=connect", "ipc error=请先登录",
                           "ipc op=\xEF\xBF\x83\xEF\xBE\xA4", "ipc error=op not allowed"});
}

TEST_F(ServiceLogOf, HeldFileLosesLinesAndNothingElse) {
  StartService();
  ASSERT_EQ(Ask(kStatus), kDown);
  const HANDLE held =
      CreateFileW(box.serviceLog().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  CloseHandle(held);
  ShutDown();
  ExpectRun(ServiceLog(), {"ipc op=status", "ipc op=shutdown", "stopped."});
}

TEST_F(ServiceLogOf, PlaceThatTakesNoLogIsNoHindrance) {
  MakeDirectories(box.serviceLog());
  Launch(box.serviceExe(), L"--daemon" + RuntimeOption());
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ShutDown();
  EXPECT_EQ(Output() + Errors(), "");
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

}  // namespace
}  // namespace e2e
