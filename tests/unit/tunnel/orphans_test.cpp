#include "src/tunnel/tunnel_internal.h"

#include "tests/unit/net/net_fixture.h"

namespace unit {
namespace {

class Orphans : public ProductTest {
 protected:
  Orphans() { AllowChildren(); }
  void Seed(const std::wstring& image) { machine.processes.Seed(image); }
  // Full paths of what is alive, the product itself left out.
  WideTexts Alive() const {
    WideTexts paths;
    for (const auto& process : machine.processes.All()) {
      if (!process->exited && !process->own) {
        paths.push_back(process->image);
      }
    }
    return paths;
  }
};

TEST_F(Orphans, AProcessOfThatNameInTheDirectoryIsKilled) {
  const auto orphan = machine.processes.Seed(L"C:\\run\\xray\\xray.exe", 777);
  EXPECT_TRUE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe"));
  EXPECT_EQ(Alive(), WideTexts());
  EXPECT_EQ(orphan->exitCode, 0u);
  EXPECT_EQ(machine.calls.TextsOf("CreateToolhelp32Snapshot"), Texts{"0x2, 0"});
  EXPECT_EQ(machine.calls.TextsOf("OpenProcess"), Texts{"0x1001, own, 777"});
  EXPECT_EQ(machine.calls.TextsOf("TerminateProcess"), Texts{"process xray.exe, 0"});
}

TEST_F(Orphans, AProcessOfThatNameElsewhereSurvives) {
  Seed(L"D:\\other\\xray\\xray.exe");
  Seed(L"C:\\run\\xray.exe");
  Seed(L"C:\\run\\xray2\\xray.exe");
  Seed(L"C:\\run\\xrayxray.exe\\xray.exe");
  EXPECT_FALSE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe"));
  EXPECT_EQ(Alive(), (WideTexts{L"D:\\other\\xray\\xray.exe", L"C:\\run\\xray.exe",
                                L"C:\\run\\xray2\\xray.exe", L"C:\\run\\xrayxray.exe\\xray.exe"}));
  EXPECT_EQ(machine.calls.Count("TerminateProcess"), 0u);
}

TEST_F(Orphans, AnotherNameInTheDirectorySurvivesAndIsNotEvenOpened) {
  Seed(L"C:\\run\\xray\\myxray.exe");
  Seed(L"C:\\run\\xray\\xray");
  Seed(L"C:\\run\\xray\\geo.exe");
  EXPECT_FALSE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe"));
  EXPECT_EQ(Alive().size(), 3u);
  EXPECT_EQ(machine.calls.Count("OpenProcess"), 0u);
}

TEST_F(Orphans, TheNameIsAPrefixSoThatAnySuffixIsHit) {
  Seed(L"C:\\run\\tun2socks\\tun2socks.exe");
  Seed(L"C:\\run\\tun2socks\\tun2socks-windows-amd64-v3.exe");
  Seed(L"C:\\run\\tun2socks\\TUN2SOCKSnew");
  EXPECT_TRUE(vpn::KillProcessesUnder(L"C:\\run\\tun2socks", L"tun2socks"));
  EXPECT_EQ(Alive(), WideTexts());
}

TEST_F(Orphans, ASubdirectoryIsHitToo) {
  Seed(L"C:\\run\\tun2socks\\old\\v2\\tun2socks.exe");
  EXPECT_TRUE(vpn::KillProcessesUnder(L"C:\\run\\tun2socks", L"tun2socks"));
  EXPECT_EQ(Alive(), WideTexts());
}

TEST_F(Orphans, TrailingSeparatorsAndCaseMakeNoDifference) {
  for (const wchar_t* directory :
       {L"C:\\run\\xray", L"C:\\run\\xray\\", L"C:\\run\\xray/", L"C:\\run\\xray\\\\//\\",
        L"c:\\RUN\\Xray", L"C:\\RUN\\XRAY\\"}) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(directory)));
    Seed(L"C:\\Run\\xRay\\XRAY.EXE");
    Seed(L"C:\\run\\xray2\\xray.exe");
    EXPECT_TRUE(vpn::KillProcessesUnder(directory, L"Xray.exe"));
    EXPECT_EQ(Alive(), WideTexts{L"C:\\run\\xray2\\xray.exe"});
    EXPECT_TRUE(vpn::KillProcessesUnder(L"C:\\run\\xray2", L"xray.exe"));
  }
}

TEST_F(Orphans, LettersOutsideAsciiHaveNoCase) {
  Seed(L"C:\\ÄRGER\\xray.exe");
  EXPECT_FALSE(vpn::KillProcessesUnder(L"C:\\ärger", L"xray.exe"));
  EXPECT_TRUE(vpn::KillProcessesUnder(L"c:\\ÄRGER", L"xray.exe"));
}

TEST_F(Orphans, ADriveIsADirectoryToo) {
  Seed(L"C:\\deep\\below\\xray.exe");
  Seed(L"D:\\xray.exe");
  EXPECT_TRUE(vpn::KillProcessesUnder(L"C:\\", L"xray.exe"));
  EXPECT_EQ(Alive(), WideTexts{L"D:\\xray.exe"});
}

TEST_F(Orphans, ADirectoryOfSeparatorsAloneHitsNothing) {
  Seed(L"C:\\run\\xray.exe");
  EXPECT_FALSE(vpn::KillProcessesUnder(L"\\/\\", L"xray.exe"));
}

TEST_F(Orphans, EveryHitIsKilled) {
  Seed(L"C:\\run\\xray\\xray.exe");
  Seed(L"D:\\xray.exe");
  Seed(L"C:\\run\\xray\\xray.exe");
  Seed(L"C:\\run\\xray\\b\\xray.exe");
  EXPECT_TRUE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe"));
  EXPECT_EQ(Alive(), WideTexts{L"D:\\xray.exe"});
}

TEST_F(Orphans, EmptyArgumentsMatchNothingAndAskForNothing) {
  Seed(L"C:\\run\\xray\\xray.exe");
  EXPECT_FALSE(vpn::KillProcessesUnder(L"", L"xray.exe"));
  EXPECT_FALSE(vpn::KillProcessesUnder(L"C:\\run\\xray", L""));
  EXPECT_EQ(machine.calls.Names(), Texts());
}

TEST_F(Orphans, ASnapshotThatFailsIsNoHit) {
  Seed(L"C:\\run\\xray\\xray.exe");
  machine.faults.Fail("CreateToolhelp32Snapshot");
  EXPECT_FALSE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe"));
  EXPECT_EQ(machine.calls.Names(), Texts{"CreateToolhelp32Snapshot"});
  EXPECT_EQ(Alive().size(), 1u);
}

TEST_F(Orphans, ASnapshotWithoutEntriesIsNoHit) {
  Seed(L"C:\\run\\xray\\xray.exe");
  machine.faults.Fail("Process32FirstW");
  EXPECT_FALSE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe"));
  EXPECT_EQ(machine.calls.Count("Process32NextW"), 0u);
}

TEST_F(Orphans, AProcessThatCantBeOpenedStaysAndTheNextIsKilled) {
  machine.processes.Seed(L"C:\\run\\xray\\xray.exe", 700)->openError = 5;
  Seed(L"C:\\run\\xray\\b\\xray.exe");
  EXPECT_TRUE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe"));
  EXPECT_EQ(Alive(), WideTexts{L"C:\\run\\xray\\xray.exe"});
  EXPECT_FALSE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe")) << "none was killed";
}

TEST_F(Orphans, AProcessWhosePathIsNotToldStaysAndTheNextIsKilled) {
  machine.processes.Seed(L"C:\\run\\xray\\xray.exe", 700)->nameError = 31;
  Seed(L"C:\\run\\xray\\b\\xray.exe");
  EXPECT_TRUE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe"));
  EXPECT_EQ(Alive(), WideTexts{L"C:\\run\\xray\\xray.exe"});
  EXPECT_FALSE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe"));
}

TEST_F(Orphans, OneThatResistsItsEndCountsAsAHit) {
  Seed(L"C:\\run\\xray\\xray.exe");
  machine.faults.Fail("TerminateProcess");
  EXPECT_TRUE(vpn::KillProcessesUnder(L"C:\\run\\xray", L"xray.exe"));
  EXPECT_EQ(Alive().size(), 1u);
}

TEST_F(Orphans, APathOf519CharactersFitsAndOneMoreDoesNot) {
  const std::wstring directory = L"C:\\" + std::wstring(519 - 3 - 9, L'd');
  Seed(directory + L"\\xray.exe");
  EXPECT_TRUE(vpn::KillProcessesUnder(directory, L"xray.exe"));
  Seed(directory + L"d\\xray.exe");
  EXPECT_FALSE(vpn::KillProcessesUnder(directory + L"d", L"xray.exe"));
}

}  // namespace
}  // namespace unit
