#include "client/doctor/missing_helpers.h"

#include <windows.h>

#include "src/runtime/runtime_files.h"
#include "src/tunnel/child_process.h"

namespace vpn {
namespace {

struct Helper {
  const wchar_t* directory;
  const wchar_t* name;
};

constexpr Helper kHelpers[] = {{kXrayDirectory, kXrayProgram},
                               {kXrayDirectory, L"geoip.dat"},
                               {kXrayDirectory, L"geosite.dat"},
                               {kTun2socksDirectory, kWintunLibrary}};

// A file that can't be looked at is not called missing.
bool IsMissing(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  const DWORD error = GetLastError();
  return attributes == INVALID_FILE_ATTRIBUTES &&
         (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND);
}

}  // namespace

std::optional<Finding> SeveralMissingHelpers(const Patient& patient) {
  const std::wstring runtime = patient.place.runtimeDir + L"\\";
  std::wstring list;
  int count = 0;
  for (const Helper& helper : kHelpers) {
    const std::wstring name = std::wstring(helper.directory) + L"\\" + helper.name;
    if (IsMissing(runtime + name)) {
      list += (list.empty() ? L"" : L", ") + name;
      ++count;
    }
  }
  if (count > 0 && FindFileByPattern(runtime + kTun2socksDirectory, kTun2socksPattern).empty()) {
    list += std::wstring(L", ") + kTun2socksDirectory + L"\\" + kTun2socksPattern;
    ++count;
  }
  if (count < 2) {
    return std::nullopt;
  }
  return Problem(L"not in " + patient.place.runtimeDir + L": " + list, L"put the files there");
}

}  // namespace vpn
