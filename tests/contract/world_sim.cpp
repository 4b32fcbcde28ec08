// The simulated machine as the contract tests' world.
#include "tests/contract/world.h"

#include "tests/sim/machine.h"
#include "tests/sim/text.h"

namespace contract {
namespace {

sim::Machine& TheMachine() {
  return *sim::Machine::Current();
}

void ActAsChild(sim::Process& process) {
  const std::string line = sim::Narrow(process.commandLine);
  const size_t exit = line.find("exit ");
  if (exit != std::string::npos) {
    const int code = std::stoi(line.substr(exit + 5));
    TheMachine().processes.Exit(process.id, static_cast<std::uint32_t>(code));
  }
}

}  // namespace

bool IsWine() {
  return false;
}

struct World::Impl {
  sim::InstalledMachine machine;
};

World::World() : impl_(std::make_unique<Impl>()), directory_(L"C:\\contract") {
  impl_->machine->files.PutDirectory(directory_);
  impl_->machine->programs.On(L"TavrinService.exe", sim::Script().Does(20, ActAsChild));
}

World::~World() {
  EXPECT_EQ(impl_->machine->OpenHandles(), std::vector<std::string>());
}

void SetVariable(const wchar_t* name, const wchar_t* value) {
  TheMachine().environment.Set(name, value);
}

void MakeDirectory(const std::wstring& path) {
  TheMachine().files.PutDirectory(path);
}

Listener::Listener() : port_(40000) {
  TheMachine().listeners.Listen(port_);
}
Listener::~Listener() {
  TheMachine().listeners.StopListening(port_);
}
USHORT FreePort() {
  return 40001;
}

void PutDword(const wchar_t* name, DWORD value) {
  TheMachine().registry.SetDword(kTestKey, name, value);
}
void PutText(const wchar_t* name, const wchar_t* text) {
  TheMachine().registry.SetText(kTestKey, name, text);
}

}  // namespace contract
