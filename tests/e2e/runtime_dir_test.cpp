// Where the service finds its runtime directory when nobody names one.
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

class RuntimeDir : public ServiceTest {
 protected:
  // The directory that the service says it uses, started in console mode.
  std::string Discovered(const Environment& environment = {}) {
    return DiscoveredBy(box.serviceExe(), environment);
  }
  std::string DiscoveredBy(const std::wstring& executable, const Environment& environment = {}) {
    Launch(executable, L"--console", environment);
    ShutDown();
    const std::string output = Output();
    const std::string before = "\nRuntime ";
    const std::size_t start = output.find(before) + before.size();
    return output.substr(start, output.find('\n', start) - start);
  }
  std::string InBox(const std::string& path) const { return standins::ToUtf8(box.root()) + path; }
};

TEST_F(RuntimeDir, IsTheSubdirectoryRuntimeWhenNothingIsFound) {
  EXPECT_EQ(Discovered(), InBox("\\service\\runtime"));
  EXPECT_FALSE(Exists(box.service() + L"\\runtime"));
}

TEST_F(RuntimeDir, IsTheSubdirectoryRuntimeBesideTheExecutable) {
  box.InstallHelpers(box.service() + L"\\runtime");
  WriteText(box.service() + L"\\xray.exe", "");
  EXPECT_EQ(Discovered(), InBox("\\service\\runtime"));
}

TEST_F(RuntimeDir, IsTheExecutablesOwnWhenXrayStandsBesideIt) {
  WriteText(box.service() + L"\\xray.exe", "");
  EXPECT_EQ(Discovered(), InBox("\\service"));
}

TEST_F(RuntimeDir, IsFoundInTheDevelopersLayout) {
  const std::wstring deep = box.root() + L"\\build\\x64\\out\\bin";
  box.InstallService(deep);
  box.InstallHelpers(box.root() + L"\\tools\\phase-b\\local");
  EXPECT_EQ(DiscoveredBy(deep + L"\\TavrinService.exe"), InBox("\\tools\\phase-b\\local"));
}

TEST_F(RuntimeDir, EnvironmentComesFirstAndIsTakenAsWritten) {
  box.InstallHelpers(box.service() + L"\\runtime");
  const std::wstring value = box.service() + L"\\..\\runtime";
  EXPECT_EQ(Discovered({{L"TAVRIN_RUNTIME", value}}), InBox("\\service\\..\\runtime"));
}

TEST_F(RuntimeDir, EnvironmentWithoutXrayIsSkipped) {
  WriteText(box.service() + L"\\xray.exe", "");
  EXPECT_EQ(Discovered({{L"TAVRIN_RUNTIME", box.machine()}}), InBox("\\service"));
}

TEST_F(RuntimeDir, EnvironmentOf260CharactersIsSkipped) {
  std::wstring value = box.runtime();
  while (value.size() < 260) value += value.size() % 2 == 0 ? L"\\." : L"\\";
  EXPECT_EQ(Discovered({{L"TAVRIN_RUNTIME", value}}), InBox("\\service\\runtime"));
}

TEST_F(RuntimeDir, DirectoryNamedLikeXrayDoesNotCount) {
  MakeDirectories(box.service() + L"\\xray.exe");
  EXPECT_EQ(Discovered(), InBox("\\service\\runtime"));
}

TEST_F(RuntimeDir, FoundDirectoryServesAConnect) {
  Launch(box.serviceExe(), L"--console", {{L"TAVRIN_RUNTIME", box.runtime()}});
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
}

}  // namespace
}  // namespace e2e
