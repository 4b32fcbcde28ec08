// The service runs programs from its directory with the system's rights, so whoever may write there
// has them too.
#include "client/doctor/directory_access.h"

#include <windows.h>
#include <aclapi.h>
#include <sddl.h>

#include <algorithm>
#include <array>
#include <cwchar>

#include "client/doctor/checks.h"
#include "src/common/unique_handle.h"

namespace vpn {
namespace {

// To add, change or delete files, and to change the list itself or its owner.
constexpr unsigned long kWriteRights =
    0x0002 | 0x0004 | 0x0040 | 0x00010000 | 0x00040000 | 0x00080000 | 0x10000000 | 0x40000000;

constexpr const wchar_t* kWriteWords[] = {L"FA", L"FW", L"GA", L"GW", L"SD",
                                          L"WD", L"WO", L"DC", L"CC", L"DT"};

// The system, the administrators, whoever owns what is created, and Windows' own installer.
constexpr const wchar_t* kTrusted[] = {
    L"SY",           L"BA",
    L"CO",           L"OW",
    L"S-1-3-4",      L"S-1-5-18",
    L"S-1-5-32-544", L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464"};

struct KnownTrustee {
  const wchar_t* sid;
  const wchar_t* name;
};
constexpr KnownTrustee kNames[] = {{L"WD", L"everyone"},
                                   {L"BU", L"the users"},
                                   {L"AU", L"every user who is signed in"},
                                   {L"IU", L"every user at the screen"},
                                   {L"BG", L"the guests"},
                                   {L"AN", L"anonymous users"}};

bool AllowsWriting(const std::wstring& rights) {
  if (rights.starts_with(L"0x")) {
    return (std::wcstoul(rights.c_str(), nullptr, 16) & kWriteRights) != 0;
  }
  for (size_t at = 0; at + 1 < rights.size(); at += 2) {
    const std::wstring word = rights.substr(at, 2);
    if (std::find(std::begin(kWriteWords), std::end(kWriteWords), word) != std::end(kWriteWords)) {
      return true;
    }
  }
  return false;
}

std::wstring NameOfTrustee(const std::wstring& sid) {
  for (const KnownTrustee& known : kNames) {
    if (sid == known.sid) {
      return known.name;
    }
  }
  return sid;
}

// The fields of an entry: type, flags, rights, two object types, trustee.
std::array<std::wstring, 6> FieldsOf(const std::wstring& entry) {
  std::array<std::wstring, 6> fields;
  size_t field = 0;
  for (const wchar_t unit : entry) {
    if (unit == L';') {
      ++field;
    } else if (field < fields.size()) {
      fields[field] += unit;
    }
  }
  return fields;
}

// Empty when the platform does not tell.
std::wstring AccessListOf(const std::wstring& directory) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  std::wstring path = directory;
  if (GetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                            nullptr, nullptr, nullptr, &descriptor) != ERROR_SUCCESS) {
    return {};
  }
  std::wstring list;
  LPWSTR text = nullptr;
  if (ConvertSecurityDescriptorToStringSecurityDescriptorW(
          descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr) != FALSE) {
    list = text;
    (void)LocalFree(text);
  }
  (void)LocalFree(descriptor);
  return list;
}

}  // namespace

std::vector<std::wstring> ForeignWriters(const std::wstring& sddl) {
  const size_t start = sddl.find(L"D:");
  if (start == std::wstring::npos || sddl.compare(start, 19, L"D:NO_ACCESS_CONTROL") == 0) {
    return {L"everyone"};
  }
  std::vector<std::wstring> writers;
  for (size_t open = sddl.find(L'(', start); open != std::wstring::npos;
       open = sddl.find(L'(', open + 1)) {
    const auto fields = FieldsOf(sddl.substr(open + 1, sddl.find(L')', open) - open - 1));
    const bool isTrusted =
        std::find(std::begin(kTrusted), std::end(kTrusted), fields[5]) != std::end(kTrusted);
    const std::wstring name = NameOfTrustee(fields[5]);
    // An entry that only files inherit counts as well: the programs are files.
    if (fields[0] == L"A" && !isTrusted && AllowsWriting(fields[2]) &&
        std::find(writers.begin(), writers.end(), name) == writers.end()) {
      writers.push_back(name);
    }
  }
  return writers;
}

Finding CheckDirectoryAccess(const Patient& patient) {
  const std::wstring& directory = patient.place.runtimeDir;
  if (GetFileAttributesW(directory.c_str()) == INVALID_FILE_ATTRIBUTES) {
    return Problem(directory + L" is not there", L"install the service's files again");
  }
  const std::wstring list = AccessListOf(directory);
  if (list.empty()) {
    return Remark(L"the access list of " + directory + L" can't be read",
                  L"run this with administrator's rights");
  }
  std::wstring names;
  for (const std::wstring& writer : ForeignWriters(list)) {
    names += (names.empty() ? L"" : L", ") + writer;
  }
  if (names.empty()) {
    return Good(L"only administrators may write to " + directory);
  }
  return Remark(names + L" may write to " + directory,
                L"the service runs what lies there with the system's rights: move it below "
                L"C:\\Program Files, or take the right away");
}

}  // namespace vpn
