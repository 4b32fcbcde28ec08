// Installing and removing the service: what is printed where, the exit codes, and what the service
// manager holds afterwards.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/installed_service_test.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr wchar_t kOddRuntime[] = L"Laufzeit \u00e4 \u8fd0\u884c";
constexpr char kStatus[] = R"({"op":"status"})";

// With a blank and characters outside ASCII in both directories of the command line.
class ServiceInstall : public InstalledServiceTest {
 protected:
  ServiceInstall() : InstalledServiceTest(kOddRuntime) {}
  void SetUp() override {
    ASSERT_FALSE(IsServiceInstalled()) << "an installed service is in the way";
    PutCopy(L"Programm \u00f6 \u7a0b\u5e8f");
  }
  void PutCopy(const std::wstring& name) {
    directory_ = box.root() + L"\\" + name;
    box.InstallService(directory_);
    NameMachineFor(directory_);
  }
  std::wstring Executable() const { return directory_ + L"\\TavrinService.exe"; }
  std::wstring CommandLine() const {
    return L"\"" + Executable() + L"\" --runtime \"" + box.runtime() + L"\"";
  }
  DWORD RunInstall() {
    return RunCopy(Executable(), L"--install --runtime \"" + box.runtime() + L"\"");
  }
  std::string InstalledText() const {
    return "Installed and started TavrinService\nbinPath " + standins::ToUtf8(CommandLine()) + "\n";
  }

 private:
  std::wstring directory_;
};

TEST_F(ServiceInstall, PrintsItsCommandLineAndStartsTheService) {
  EXPECT_EQ(RunInstall(), 0U);
  EXPECT_EQ(Output(), InstalledText());
  EXPECT_EQ(Errors(), "");
  EXPECT_EQ(Ask(kStatus), kDown);
  ExpectLines(ServiceLog(),
              {"service running. runtime=" + standins::ToUtf8(box.runtime()), "ipc op=status"});
}

TEST_F(ServiceInstall, RegistersExactlyTheseSettings) {
  ASSERT_EQ(RunInstall(), 0U);
  const ServiceSettings settings = WindowsService().Settings();
  EXPECT_EQ(settings.type, static_cast<DWORD>(SERVICE_WIN32_OWN_PROCESS));
  EXPECT_EQ(settings.startType, static_cast<DWORD>(SERVICE_AUTO_START));
  EXPECT_EQ(settings.errorControl, static_cast<DWORD>(SERVICE_ERROR_NORMAL));
  EXPECT_EQ(standins::ToUtf8(settings.commandLine), standins::ToUtf8(CommandLine()));
  EXPECT_EQ(settings.loadOrderGroup, L"");
  EXPECT_EQ(settings.dependencies, L"");
  EXPECT_EQ(settings.account, L"LocalSystem");
  EXPECT_EQ(standins::ToUtf8(settings.displayName), "Tavrin连接服务");
  EXPECT_EQ(standins::ToUtf8(settings.description),
            "Tavrin数据通道：Xray + tun2socks。界面通过命名管道连接。");
}

TEST_F(ServiceInstall, InstalledServiceConnects) {
  ASSERT_EQ(RunInstall(), 0U);
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

// An upgrade: the old one ends with its tunnel, and the new one runs from its own directory.
TEST_F(ServiceInstall, ReplacesARunningService) {
  ASSERT_EQ(RunInstall(), 0U);
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const HANDLE old = WindowsService().OpenProcess();
  PutCopy(L"Programm 2");
  EXPECT_EQ(RunInstall(), 0U);
  EXPECT_EQ(Output(), InstalledText());
  EXPECT_EQ(Errors(), "");
  ExpectEnds(old);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
  EXPECT_EQ(Ask(kStatus), kDown);
  EXPECT_EQ(standins::ToUtf8(WindowsService().Settings().commandLine),
            standins::ToUtf8(CommandLine()));
  const std::string running = "service running. runtime=" + standins::ToUtf8(box.runtime());
  ExpectLines(ServiceLog(),
              {running, "ipc op=connect", "service stopped", running, "ipc op=status"});
}

TEST_F(ServiceInstall, UninstallStopsTheServiceAndRemovesIt) {
  ASSERT_EQ(RunInstall(), 0U);
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const HANDLE process = WindowsService().OpenProcess();
  EXPECT_EQ(RunCopy(Executable(), L"--uninstall"), 0U);
  EXPECT_EQ(Output(), "Uninstalled TavrinService\n");
  EXPECT_EQ(Errors(), "");
  ExpectEnds(process);
  EXPECT_FALSE(IsServiceInstalled());
  EXPECT_EQ(ServiceLog().back(), "service stopped");
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

TEST_F(ServiceInstall, GoesBeforeUninstallOnOneCommandLine) {
  EXPECT_EQ(RunCopy(Executable(), L"--install --uninstall --runtime \"" + box.runtime() + L"\""),
            0U);
  EXPECT_EQ(Output(), InstalledText());
  EXPECT_TRUE(IsServiceInstalled());
}

TEST_F(ServiceInstall, UninstallOfAnAbsentServiceIsNoFailure) {
  EXPECT_EQ(RunCopy(Executable(), L"--uninstall"), 0U);
  EXPECT_EQ(Output(), "Service not installed.\n");
  EXPECT_EQ(Errors(), "");
  EXPECT_EQ(ServiceLog(), Lines{});
}

// Somebody who has the service open keeps its name taken: the one failure that needs no rights.
TEST_F(ServiceInstall, FailureIsPrintedToTheErrorStreamAndGivesOne) {
  ASSERT_EQ(RunInstall(), 0U);
  {
    const WindowsService keepsOpen;
    EXPECT_EQ(RunInstall(), 1U);
    EXPECT_EQ(Output(), "");
    EXPECT_EQ(Errors(), "CreateService failed err=1072\n");
  }
  EXPECT_EQ(RunInstall(), 0U) << "and the next one succeeds";
}

}  // namespace
}  // namespace e2e
