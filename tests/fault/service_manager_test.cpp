// The installation and the removal of the service, with each fallible call failing in turn.
#include <gtest/gtest.h>

#include <map>
#include <optional>

#include "src/host/entry_point.h"
#include "tests/fault/each_call.h"
#include "tests/fault/process.h"

namespace fault {
namespace {

constexpr char kName[] = "TavrinService";
constexpr char kCommandLine[] = R"("C:\App\TavrinService.exe" --runtime "C:\run")";

struct Scene {
  const char* name;
  bool isInstalled;       // an older service runs
  const wchar_t* option;  // `--install`
  // What is there when this call alone fails, where that differs from the run without faults.
  std::map<std::string, std::string> states;
};

constexpr char kOldRunning[] = "old, running";
constexpr char kOldStopped[] = "old, stopped";
constexpr char kOldGoing[] = "old, running, goes when its process ends";
constexpr char kNone[] = "none";
constexpr char kNew[] = "new, running";

const std::vector<Scene>& AllScenes() {
  static const auto& scenes = *new std::vector<Scene>{
      {"FirstInstallation",
       false,
       L"--install",
       {{"OpenSCManagerW", kNone},
        {"CreateServiceW", kNone},
        {"ChangeServiceConfig2W", "new, running, without a description"},
        {"StartServiceW", "new, stopped"},
        {"GetModuleFileNameW", "new, running, of no program"}}},
      {"InstallationOverAnOlderOne",
       true,
       L"--install",
       {{"OpenSCManagerW", kOldRunning},
        {"OpenServiceW", kOldRunning},  // the name is taken
        {"ControlService", kOldGoing},
        {"DeleteService", kOldStopped},
        {"CreateServiceW", kNone},
        {"ChangeServiceConfig2W", "new, running, without a description"},
        {"StartServiceW", "new, stopped"},
        {"GetModuleFileNameW", "new, running, of no program"}}},
      {"Removal",
       true,
       L"--uninstall",
       {{"OpenSCManagerW", kOldRunning},
        {"OpenServiceW", kOldRunning},  // told as not installed
        {"ControlService", kOldGoing},
        {"DeleteService", kOldStopped}}},
  };
  return scenes;
}

void PrintTo(const Scene& scene, std::ostream* out) {
  *out << scene.name;
}

struct Outcome {
  int code = -1;
  std::vector<sim::CallRecord> calls;
};

class Manager {
 public:
  explicit Manager(bool isInstalled) {
    machine->modulePath = L"C:\\App\\TavrinService.exe";
    if (isInstalled) {
      sim::ServiceRecord record;
      record.name = kName;
      record.displayName = "old";
      record.description = "old";
      record.binaryPath = "old.exe";
      record.state = SERVICE_RUNNING;
      machine->services.Install(record);
    }
  }

  // The whole program with this option.
  Outcome Run(const wchar_t* option, const std::function<void(sim::Machine&)>& arrange) {
    Outcome outcome;
    BeginProcess();
    const size_t from = machine->calls.All().size();
    machine->RunProcess([&] {
      std::wstring arguments[] = {L"TavrinService.exe", option, L"--runtime", L"C:\\run"};
      wchar_t* argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(),
                         arguments[3].data(), nullptr};
      arrange(*machine);
      outcome.code = wmain(4, argv);
    });
    outcome.calls = FallibleCalls(*machine, from);
    machine->faults.Clear();
    EXPECT_EQ(machine->OpenHandles(), Lines());
    EXPECT_EQ(machine->Violations(), Lines());
    return outcome;
  }

  std::string State() const {
    const std::optional<sim::ServiceRecord> found = machine->services.Find(kName);
    if (!found) {
      return kNone;
    }
    const bool isRunning = found->state == SERVICE_RUNNING;
    std::string text = found->displayName == "old" ? "old" : "new";
    text += isRunning ? ", running" : ", stopped";
    text += found->markedForDelete ? ", goes when its process ends" : "";
    if (text.starts_with("new")) {
      text += found->description.empty() ? ", without a description" : "";
      text += found->binaryPath == kCommandLine ? "" : ", of no program";
      EXPECT_EQ(found->startType, std::uint32_t{SERVICE_AUTO_START});
      EXPECT_EQ(found->type, std::uint32_t{SERVICE_WIN32_OWN_PROCESS});
    }
    return text;
  }

  // Whatever is there, the commands without faults put it right.
  void ExpectNextCommandsWork() {
    const auto nothing = [](sim::Machine&) {};
    EXPECT_EQ(Run(L"--install", nothing).code, 0);
    EXPECT_EQ(State(), kNew);
    EXPECT_EQ(Run(L"--uninstall", nothing).code, 0);
    EXPECT_EQ(State(), kNone);
  }

  sim::InstalledMachine machine;
};

class ServiceManager : public ::testing::TestWithParam<Scene> {
 protected:
  void SetUp() override {
    Manager manager(GetParam().isInstalled);
    const Outcome outcome = manager.Run(GetParam().option, [](sim::Machine&) {});
    ASSERT_EQ(outcome.code, 0);
    state = manager.State();
    calls = outcome.calls;
  }

  void RunAll(Mode mode) {
    EachCall(GetParam().name, Describe(calls), [&](size_t index) {
      Manager manager(GetParam().isInstalled);
      const Outcome outcome = manager.Run(
          GetParam().option, [&](sim::Machine& machine) { Arrange(machine, mode, index); });
      if (mode == Mode::kOnce) {
        CheckOnce(manager, outcome, calls[index].name);
      } else {
        CheckState(manager, outcome);
      }
      manager.ExpectNextCommandsWork();
    });
  }

  void CheckOnce(const Manager& manager, const Outcome& outcome, const std::string& name) const {
    const auto found = GetParam().states.find(name);
    const std::string expected = found == GetParam().states.end() ? state : found->second;
    EXPECT_EQ(manager.State(), expected);
    // A service that can't be opened counts as none, and one that hangs is gone with its process.
    const bool isRemoval = state == kNone;
    const bool isGood = isRemoval
                            ? expected == kNone || expected == kOldGoing || name == "OpenServiceW"
                            : expected.starts_with(kNew);
    EXPECT_EQ(outcome.code, isGood ? 0 : 1);
  }

  // No state in between that a failure of one call does not leave.
  void CheckState(const Manager& manager, const Outcome& outcome) const {
    const std::string now = manager.State();
    bool isKnown = now == state || now == (GetParam().isInstalled ? kOldRunning : kNone);
    for (const auto& [name, known] : GetParam().states) {
      isKnown |= now == known;
    }
    isKnown |= now == "new, stopped, without a description" ||
               now == "new, stopped, without a description, of no program";
    EXPECT_TRUE(isKnown) << now;
    if (state == kNew && outcome.code == 0) {
      EXPECT_TRUE(now.starts_with(kNew)) << now;
    }
  }

  std::string state;  // behind the run without faults
  std::vector<sim::CallRecord> calls;
};

TEST_P(ServiceManager, HasWhatIsToldWhenOneCallFails) {
  RunAll(Mode::kOnce);
}

TEST_P(ServiceManager, HasNothingHalfMadeWhenAllCallsFailFromOneOn) {
  RunAll(Mode::kOnwards);
}

TEST_P(ServiceManager, HasNothingHalfMadeWhenTheProcessDies) {
  RunAll(Mode::kKilled);
}

INSTANTIATE_TEST_SUITE_P(Scenes, ServiceManager, ::testing::ValuesIn(AllScenes()),
                         [](const auto& scene) { return std::string(scene.param.name); });

}  // namespace
}  // namespace fault
