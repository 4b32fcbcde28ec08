#include "src/runtime/runtime_dir.h"

#include "src/runtime/runtime_dir_internal.h"
#include "tests/unit/product_state.h"

namespace vpn {
namespace {

class RuntimeDirDiscovery : public unit::ProductTest {
 protected:
  RuntimeDirDiscovery() { machine.modulePath = L"C:\\App\\bin\\TavrinService.exe"; }

  void PutMarker(const std::wstring& directory) {
    machine.files.Put(directory + L"\\xray\\xray.exe");
  }
  std::vector<std::string> Tested() { return machine.calls.TextsOf("GetFileAttributesW"); }
};

TEST_F(RuntimeDirDiscovery, EitherMarkerIsEnough) {
  machine.files.Put(L"C:\\a\\xray\\xray.exe");
  machine.files.Put(L"C:\\b\\xray.exe");
  EXPECT_TRUE(IsRuntimeDir(L"C:\\a"));
  EXPECT_TRUE(IsRuntimeDir(L"C:\\b"));
}

TEST_F(RuntimeDirDiscovery, MarkersAreTestedInOrderAndNothingElse) {
  machine.files.Put(L"C:\\a\\tun2socks\\tun2socks.exe");
  EXPECT_FALSE(IsRuntimeDir(L"C:\\a"));
  EXPECT_EQ(Tested(), (std::vector<std::string>{R"("C:\a\xray\xray.exe")", R"("C:\a\xray.exe")"}));
}

TEST_F(RuntimeDirDiscovery, MarkerIsNotOpened) {
  PutMarker(L"C:\\a");
  machine.files.SetLocked(L"C:\\a\\xray\\xray.exe", true);
  EXPECT_TRUE(IsRuntimeDir(L"C:\\a"));
  EXPECT_EQ(machine.calls.Count("_wfsopen"), 0u);
}

TEST_F(RuntimeDirDiscovery, DirectoryNamedXrayExeDoesNotCount) {
  machine.files.PutDirectory(L"C:\\a\\xray\\xray.exe");
  machine.files.PutDirectory(L"C:\\a\\xray.exe");
  EXPECT_FALSE(IsRuntimeDir(L"C:\\a"));
}

TEST_F(RuntimeDirDiscovery, DirectoryAsTheFirstMarkerLeavesTheSecondItsChance) {
  machine.files.PutDirectory(L"C:\\a\\xray\\xray.exe");
  machine.files.Put(L"C:\\a\\xray.exe");
  EXPECT_TRUE(IsRuntimeDir(L"C:\\a"));
}

TEST_F(RuntimeDirDiscovery, ReadOnlyMarkerCounts) {
  PutMarker(L"C:\\a");
  machine.files.SetReadOnly(L"C:\\a\\xray\\xray.exe", true);
  EXPECT_TRUE(IsRuntimeDir(L"C:\\a"));
}

TEST_F(RuntimeDirDiscovery, ModuleDirectoryEndsInFrontOfTheLastSeparatorOfEitherKind) {
  EXPECT_EQ(ModuleDirectory(), L"C:\\App\\bin");
  machine.modulePath = L"C:\\App/bin/Tavrin.exe";
  EXPECT_EQ(ModuleDirectory(), L"C:\\App/bin");
  machine.modulePath = L"C:/App\\Tavrin.exe";
  EXPECT_EQ(ModuleDirectory(), L"C:/App");
}

TEST_F(RuntimeDirDiscovery, ModuleDirectoryIsADotWithoutASeparator) {
  machine.modulePath = L"Tavrin.exe";
  EXPECT_EQ(ModuleDirectory(), L".");
}

TEST_F(RuntimeDirDiscovery, ModuleDirectoryIsADotWhenThePlatformDoesNotTell) {
  machine.faults.Fail("GetModuleFileNameW");
  EXPECT_EQ(ModuleDirectory(), L".");
}

TEST_F(RuntimeDirDiscovery, ValidEnvironmentBeatsAValidDirectoryBesideTheExecutable) {
  PutMarker(L"D:\\env");
  PutMarker(L"C:\\App\\bin\\runtime");
  machine.environment.Set(L"TAVRIN_RUNTIME", L"D:\\env");
  EXPECT_EQ(FindRuntimeDir(), L"D:\\env");
  EXPECT_EQ(machine.calls.Count("GetModuleFileNameW"), 0u);
}

TEST_F(RuntimeDirDiscovery, ValueOfTheEnvironmentIsReturnedAsWritten) {
  PutMarker(L"D:\\env");
  machine.environment.Set(L"TAVRIN_RUNTIME", L"d:/x\\..\\ENV\\");
  EXPECT_EQ(FindRuntimeDir(), L"d:/x\\..\\ENV\\");
  EXPECT_EQ(machine.calls.Count("GetFullPathNameW"), 0u);
}

TEST_F(RuntimeDirDiscovery, InvalidEnvironmentIsSkippedSilently) {
  PutMarker(L"C:\\App\\bin\\runtime");
  machine.environment.Set(L"TAVRIN_RUNTIME", L"D:\\nothing here");
  EXPECT_EQ(FindRuntimeDir(), L"C:\\App\\bin\\runtime");
  EXPECT_EQ(machine.calls.Count("CreateFileW"), 0u);  // no log line either
}

TEST_F(RuntimeDirDiscovery, EmptyEnvironmentIsNotTested) {
  PutMarker(L"C:\\App\\bin\\runtime");
  machine.files.Put(L"C:\\xray.exe");  // what an empty directory and the second marker would give
  machine.environment.Set(L"TAVRIN_RUNTIME", L"");
  EXPECT_EQ(FindRuntimeDir(), L"C:\\App\\bin\\runtime");
  EXPECT_EQ(Tested(), std::vector<std::string>{R"("C:\App\bin\runtime\xray\xray.exe")"});
}

TEST_F(RuntimeDirDiscovery, LongestValueWhoseMarkerFitsAPathIsTaken) {
  const std::wstring value = L"D:\\" + std::wstring(247, L'e');  // 250, and 9 for "\xray.exe"
  machine.files.Put(value + L"\\xray.exe");
  machine.environment.Set(L"TAVRIN_RUNTIME", value);
  EXPECT_EQ(FindRuntimeDir(), value);
}

TEST_F(RuntimeDirDiscovery, ValueOf259CharactersIsTestedAndOneOf260IsNot) {
  const std::string prefix = "\"D:\\eeeeeeee";
  for (const size_t length : {259u, 260u, 400u}) {
    SCOPED_TRACE(length);
    machine.calls.Clear();
    machine.environment.Set(L"TAVRIN_RUNTIME", L"D:\\" + std::wstring(length - 3, L'e'));
    EXPECT_EQ(FindRuntimeDir(), L"C:\\App\\bin\\runtime");
    const std::vector<std::string> tested = Tested();
    ASSERT_FALSE(tested.empty());
    EXPECT_EQ(tested.front().substr(0, prefix.size()) == prefix, length == 259);
  }
}

TEST_F(RuntimeDirDiscovery, CandidatesFollowInTheirOrder) {
  machine.modulePath = L"C:\\d1\\d2\\d3\\d4\\App\\bin\\TavrinService.exe";
  PutMarker(L"C:\\d1\\d2\\tools\\phase-b\\local");
  EXPECT_EQ(FindRuntimeDir(), L"C:\\d1\\d2\\tools\\phase-b\\local");
  PutMarker(L"C:\\d1\\d2\\d3\\d4\\App\\bin");
  EXPECT_EQ(FindRuntimeDir(), L"C:\\d1\\d2\\d3\\d4\\App\\bin");
  PutMarker(L"C:\\d1\\d2\\d3\\d4\\App\\bin\\runtime");
  EXPECT_EQ(FindRuntimeDir(), L"C:\\d1\\d2\\d3\\d4\\App\\bin\\runtime");
}

TEST_F(RuntimeDirDiscovery, CandidatesArePassedThroughTheFullPath) {
  (void)FindRuntimeDir();
  EXPECT_EQ(machine.calls.TextsOf("GetFullPathNameW"),
            (std::vector<std::string>{R"("C:\App\bin\runtime")", R"("C:\App\bin")",
                                      R"("C:\App\bin\..\..\..\..\tools\phase-b\local")",
                                      R"("C:\App\bin\runtime")"}));
}

TEST_F(RuntimeDirDiscovery, XrayInTheExecutablesDirectoryGivesThatDirectoryNormalised) {
  machine.modulePath = L"C:\\App\\x\\..\\bin/TavrinService.exe";
  machine.files.Put(L"C:\\App\\bin\\xray.exe");
  EXPECT_EQ(FindRuntimeDir(), L"C:\\App\\bin");
}

TEST_F(RuntimeDirDiscovery, NothingFoundGivesTheFullPathOfRuntimeBesideTheExecutable) {
  machine.modulePath = L"C:\\App\\x\\..\\bin/TavrinService.exe";
  EXPECT_EQ(FindRuntimeDir(), L"C:\\App\\bin\\runtime");
  EXPECT_FALSE(machine.files.Exists(L"C:\\App\\bin\\runtime"));
}

TEST_F(RuntimeDirDiscovery, ExistingDirectoryWithoutMarkersIsTheSameFallback) {
  machine.files.PutDirectory(L"C:\\App\\bin\\runtime");
  EXPECT_EQ(FindRuntimeDir(), L"C:\\App\\bin\\runtime");
}

TEST_F(RuntimeDirDiscovery, UnknownModuleSearchesTheCurrentDirectory) {
  machine.faults.Fail("GetModuleFileNameW");
  machine.files.currentDirectory = L"C:\\cwd";
  PutMarker(L"C:\\cwd\\runtime");
  EXPECT_EQ(FindRuntimeDir(), L"C:\\cwd\\runtime");
}

TEST_F(RuntimeDirDiscovery, CandidateWithoutAFullPathIsSkipped) {
  PutMarker(L"C:\\App\\bin\\runtime");
  PutMarker(L"C:\\App\\bin");
  machine.faults.Fail("GetFullPathNameW");
  EXPECT_EQ(FindRuntimeDir(), L"C:\\App\\bin");
}

TEST_F(RuntimeDirDiscovery, NoFullPathAtAllGivesTheModuleDirectory) {
  PutMarker(L"C:\\App\\bin\\runtime");
  machine.faults.FailAlways("GetFullPathNameW");
  EXPECT_EQ(FindRuntimeDir(), L"C:\\App\\bin");
}

TEST_F(RuntimeDirDiscovery, FullPathThatDoesNotFitCountsAsNone) {
  const std::wstring base = L"C:\\" + std::wstring(250, L'a');  // and 8 for "\runtime"
  machine.modulePath = base + L"\\T.ex";
  EXPECT_EQ(FindRuntimeDir(), base);
}

TEST_F(RuntimeDirDiscovery, FullPathOf259CharactersFits) {
  const std::wstring base = L"C:\\" + std::wstring(248, L'a');
  machine.modulePath = base + L"\\T.exe";
  EXPECT_EQ(FindRuntimeDir(), base + L"\\runtime");
}

}  // namespace
}  // namespace vpn
