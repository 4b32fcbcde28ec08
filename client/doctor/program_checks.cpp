// The helper programs, their versions, and what Xray says of the last configuration.
#include <windows.h>

#include <cwchar>

#include "client/doctor/captured_run.h"
#include "client/doctor/checks.h"
#include "client/doctor/missing_helpers.h"
#include "client/report/secrets.h"
#include "client/text/display_width.h"
#include "src/common/files.h"
#include "src/common/text.h"
#include "src/runtime/runtime_files.h"
#include "src/tunnel/child_process.h"

namespace vpn {
namespace {

constexpr DWORD kVersionLimit = 5000;  // milliseconds
constexpr DWORD kTestLimit = 10000;
constexpr unsigned long kLeastMajor = 2;  // of tun2socks: older ones refuse the service's options
constexpr unsigned long kLeastMinor = 6;
constexpr const wchar_t* kGeoFiles[] = {L"geoip.dat", L"geosite.dat"};

bool IsThere(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsEmptyFile(const std::wstring& path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  return GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) != FALSE &&
         data.nFileSizeLow == 0 && data.nFileSizeHigh == 0;
}

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
  return Problem(path + text, L"put a working file there; a virus scanner may hold it");
}

// What is missing among the files beside the programs; empty when nothing is.
std::wstring MissingBeside(const Patient& patient) {
  if (!IsThere(Tun2socksDirectory(patient) + L"\\" + kWintunLibrary)) {
    return Tun2socksDirectory(patient) + L"\\" + kWintunLibrary;
  }
  for (const wchar_t* name : kGeoFiles) {
    const std::wstring path = XrayDirectory(patient) + L"\\" + name;
    if (!IsThere(path) || IsEmptyFile(path)) {
      return path;
    }
  }
  return {};
}

// The last line of the output that holds anything.
std::wstring LastWords(std::string output) {
  output.erase(output.find_last_not_of("\r\n ") + 1);
  return PlainLine(Utf8ToWide(output.substr(output.rfind('\n') + 1)));  // npos + 1 is 0
}

}  // namespace

Finding CheckPrograms(const Patient& patient) {
  if (const std::optional<Finding> missing = SeveralMissingHelpers(patient)) {
    return *missing;
  }
  const std::wstring xray = XrayDirectory(patient) + L"\\" + kXrayProgram;
  const std::wstring tun2socks = FindFileByPattern(Tun2socksDirectory(patient), kTun2socksPattern);
  if (!IsThere(xray)) {
    return Problem(xray + L" is not there", L"put the file there");
  }
  if (tun2socks.empty()) {
    return Problem(Tun2socksDirectory(patient) + L" holds no " + kTun2socksPattern,
                   L"put the file there");
  }
  const std::wstring missing = MissingBeside(patient);
  if (!missing.empty()) {
    return Problem(missing + L" is not there, or empty", L"put the file there");
  }
  const CapturedRun xrayRun =
      RunCaptured(QuoteArgument(xray) + L" version", XrayDirectory(patient), kVersionLimit);
  const std::wstring xrayVersion = VersionIn(xrayRun.output);
  if (!xrayRun.hasEnded || xrayVersion.empty()) {
    return DoesNotRun(xray, xrayRun);
  }
  const CapturedRun tunRun = RunCaptured(QuoteArgument(tun2socks) + L" --version",
                                         Tun2socksDirectory(patient), kVersionLimit);
  const std::wstring tunVersion = VersionIn(tunRun.output);
  if (!tunRun.hasEnded || tunVersion.empty()) {
    return DoesNotRun(tun2socks, tunRun);
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
  if (!IsThere(path)) {
    return Good(L"none generated yet");
  }
  if (!IsThere(xray)) {
    return Remark(L"can't be checked without Xray", L"put xray.exe there");
  }
  std::string text;
  if (!ReadFileBytes(path, text)) {
    return Remark(path + L" can't be read", L"run this with administrator's rights");
  }
  const CapturedRun run = RunCaptured(QuoteArgument(xray) + L" run -test -c " + QuoteArgument(path),
                                      XrayDirectory(patient), kTestLimit);
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
