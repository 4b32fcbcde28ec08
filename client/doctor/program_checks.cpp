// The helper programs, their versions, and what Xray says of the last configuration.
#include <windows.h>

#include <cwchar>
#include <optional>

#include "client/doctor/captured_run.h"
#include "client/doctor/checks.h"
#include "client/doctor/configuration_test_run.h"
#include "client/doctor/file_look.h"
#include "client/report/secrets.h"
#include "client/text/display_width.h"
#include "src/common/files.h"
#include "src/common/text.h"
#include "src/runtime/runtime_files.h"
#include "src/tunnel/child_process.h"

namespace vpn {
namespace {

constexpr DWORD kVersionLimit = 5000;     // milliseconds
constexpr unsigned long kLeastMajor = 2;  // of tun2socks: older ones refuse the service's options
constexpr unsigned long kLeastMinor = 6;
constexpr const wchar_t* kGeoFiles[] = {L"geoip.dat", L"geosite.dat"};
constexpr wchar_t kPutThere[] = L"put the file there";
constexpr wchar_t kPutWorking[] = L"put a working file there; a virus scanner may hold it";

std::wstring XrayDirectory(const Patient& patient) {
  return patient.place.runtimeDir + L"\\" + kXrayDirectory;
}

std::wstring Tun2socksDirectory(const Patient& patient) {
  return patient.place.runtimeDir + L"\\" + kTun2socksDirectory;
}

bool IsTooOld(const std::wstring& version) {
  wchar_t* rest = nullptr;
  const unsigned long major = std::wcstoul(version.c_str(), &rest, 10);
  const unsigned long minor = *rest == L'.' ? std::wcstoul(rest + 1, nullptr, 10) : 0;
  return major < kLeastMajor || (major == kLeastMajor && minor < kLeastMinor);
}

Finding DoesNotRun(const std::wstring& path, const CapturedRun& run) {
  const std::wstring text = run.hasStarted && !run.hasEnded ? L" does not end" : L" does not run";
  return Problem(path + text, kPutWorking);
}

enum class Kind { kCode, kData };

// Nothing when nothing is wrong with the file.
std::optional<Finding> WrongWithFile(const std::wstring& path, Kind kind) {
  std::string start;
  const FileState state = LookAtProgram(path, start);
  if (state != FileState::kReadable) {
    return BadFile(path, state, kPutThere);
  }
  if (kind == Kind::kCode && start != "MZ") {
    return Problem(path + L" is damaged: a program begins with MZ", kPutThere);
  }
  return std::nullopt;
}

std::optional<Finding> WrongWithXray(const Patient& patient) {
  std::optional<Finding> wrong =
      WrongWithFile(XrayDirectory(patient) + L"\\" + kXrayProgram, Kind::kCode);
  for (const wchar_t* name : kGeoFiles) {
    if (!wrong) {
      wrong = WrongWithFile(XrayDirectory(patient) + L"\\" + name, Kind::kData);
    }
  }
  return wrong;
}

// Gives the path of the program.
std::optional<Finding> WrongWithTun2socks(const Patient& patient, std::wstring& program) {
  const std::wstring directory = Tun2socksDirectory(patient);
  program = FindFileByPattern(directory, kTun2socksPattern);
  const DWORD error = GetLastError();
  if (program.empty() && error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) {
    return BadFile(directory, FileState::kUnreadable, {});
  }
  if (program.empty()) {
    return Problem(directory + L" holds no " + kTun2socksPattern, kPutThere);
  }
  std::optional<Finding> wrong = WrongWithFile(program, Kind::kCode);
  return wrong ? wrong : WrongWithFile(directory + L"\\" + kWintunLibrary, Kind::kCode);
}

std::optional<Finding> AskVersion(const std::wstring& program, const wchar_t* option,
                                  const std::wstring& directory, std::wstring& version) {
  const CapturedRun run =
      RunCaptured(QuoteArgument(program) + L" " + option, directory, kVersionLimit);
  if (!run.hasEnded) {
    return DoesNotRun(program, run);
  }
  if (run.exitCode != 0) {
    return Problem(
        program + L" " + option + L" fails with the code " + std::to_wstring(run.exitCode),
        kPutWorking);
  }
  version = VersionIn(run.output);
  if (version.empty()) {
    return Problem(program + L" does not tell its version", kPutWorking);
  }
  return std::nullopt;
}

// The last line of the output that holds anything.
std::wstring LastWords(std::string output) {
  output.erase(output.find_last_not_of("\r\n ") + 1);
  return PlainLine(Utf8ToWide(output.substr(output.rfind('\n') + 1)));  // npos + 1 is 0
}

}  // namespace

Finding CheckPrograms(const Patient& patient) {
  const std::wstring xray = XrayDirectory(patient) + L"\\" + kXrayProgram;
  std::wstring tun2socks;
  std::wstring xrayVersion;
  std::wstring tunVersion;
  std::optional<Finding> wrong = WrongWithXray(patient);
  if (!wrong) {
    wrong = WrongWithTun2socks(patient, tun2socks);
  }
  if (!wrong) {
    wrong = AskVersion(xray, L"version", XrayDirectory(patient), xrayVersion);
  }
  if (!wrong) {
    wrong = AskVersion(tun2socks, L"--version", Tun2socksDirectory(patient), tunVersion);
  }
  if (wrong) {
    return *wrong;
  }
  const std::wstring text =
      L"Xray " + xrayVersion + L", tun2socks " + tunVersion + L", " + kWintunLibrary;
  return IsTooOld(tunVersion)
             ? Problem(text, L"put tun2socks 2.6.0 or newer there: older ones refuse the options")
             : Good(text);
}

Finding CheckConfiguration(const Patient& patient) {
  const std::wstring path = patient.place.runtimeDir + L"\\" + kXrayConfigFile;
  const std::wstring xray = XrayDirectory(patient) + L"\\" + kXrayProgram;
  const FileState state = LookAtFile(path, kMostInput);
  if (state == FileState::kMissing) {
    return Good(L"none generated yet");
  }
  std::string text;
  if (state != FileState::kReadable || !ReadFileBytes(path, text)) {
    return BadFile(path, state == FileState::kReadable ? FileState::kUnreadable : state,
                   L"delete it, and connect again: each connect writes it anew");
  }
  if (std::string start; LookAtProgram(xray, start) != FileState::kReadable) {
    return Remark(L"can't be checked without Xray", L"put xray.exe there");
  }
  const CapturedRun run = TestConfiguration(xray, XrayDirectory(patient), text);
  if (!run.hasEnded) {
    return DoesNotRun(xray, run);
  }
  if (run.exitCode != 0) {
    // Xray quotes what it refuses, and that may be a key.
    const std::string words = Scrub(WideToUtf8(LastWords(run.output)), SecretsIn(text));
    return Problem(L"Xray refuses the last one: " + Utf8ToWide(words),
                   L"choose another node, or sign in again; the node's settings are damaged, or a "
                   L"geo file is too old");
  }
  return Good(L"Xray accepts the last one");
}

}  // namespace vpn
