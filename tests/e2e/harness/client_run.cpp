#include "tests/e2e/harness/client_run.h"

#include <gtest/gtest.h>

namespace e2e {
namespace {

std::wstring Install(const Sandbox& box) {
  std::wstring target = box.service() + L"\\tavrinctl.exe";
  if (!Exists(target)) {
    CopyProgram(L"tavrinctl.exe", target);
  }
  return target;
}

bool TakesRuntime(const std::wstring& arguments) {
  for (const wchar_t* command : {L"status", L"connect", L"nodes", L"trace", L"doctor", L"report",
                                 L"login", L"logout", L"account", L"register", L"reset-password",
                                 L"plans", L"buy", L"order", L"invite", L"referrals", L"device"}) {
    if (arguments.starts_with(command)) return true;
  }
  return false;
}

std::wstring FreshOutput(const Sandbox& box) {
  static int runs = 0;
  return box.root() + L"\\client " + std::to_wstring(++runs) + L".txt";
}

}  // namespace

InputPipe::InputPipe() {
  SECURITY_ATTRIBUTES inherit{sizeof(inherit), nullptr, TRUE};
  CreatePipe(&reading_, &writing_, &inherit, 0);
  SetHandleInformation(writing_, HANDLE_FLAG_INHERIT, 0);  // or the input would never end
}

InputPipe::~InputPipe() {
  End();
  CloseHandle(reading_);
}

void InputPipe::Write(const std::string& bytes) const {
  DWORD count = 0;
  WriteFile(writing_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
}

void InputPipe::End() {
  if (writing_ != nullptr) CloseHandle(writing_);
  writing_ = nullptr;
}

ClientRun::ClientRun(const Sandbox& box, const std::wstring& arguments)
    : output_(FreshOutput(box)),
      process_(
          Install(box),
          arguments + (TakesRuntime(arguments) ? L" --runtime \"" + box.runtime() + L"\"" : L""),
          {{L"TAVRIN_TEST_MACHINE", box.machine()}}, output_, input_.reading()) {}

DWORD ClientRun::ExitCode() {
  input_.End();
  return process_.WaitForExitCode();
}

nlohmann::json ClientObject(const Sandbox& box, const std::wstring& arguments, DWORD exitCode) {
  ClientRun run(box, arguments + L" --json");
  EXPECT_EQ(run.ExitCode(), exitCode) << run.Errors();
  return nlohmann::json::parse(run.Output());
}

nlohmann::json DoctorFinding(const Sandbox& box, const std::string& check) {
  ClientRun run(box, L"doctor --json");
  (void)run.ExitCode();
  const nlohmann::json object = nlohmann::json::parse(run.Output());
  for (const nlohmann::json& finding : object.at("findings")) {
    if (finding.at("check") == check) return finding;
  }
  return {};
}

}  // namespace e2e
