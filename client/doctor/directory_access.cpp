// The service runs programs from its directories with the system's rights, so whoever may write
// there has them too.
#include <windows.h>
#include <aclapi.h>
#include <sddl.h>

#include <vector>

#include "client/doctor/access_list.h"
#include "client/doctor/checks.h"
#include "client/doctor/file_look.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

constexpr SECURITY_INFORMATION kParts = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

// Owner and access list in SDDL; empty when the platform does not tell.
std::wstring DescriptorOf(const std::wstring& directory) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  std::wstring path = directory;
  if (GetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, kParts, nullptr, nullptr, nullptr, nullptr,
                            &descriptor) != ERROR_SUCCESS) {
    return {};
  }
  std::wstring list;
  LPWSTR text = nullptr;
  if (ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1, kParts,
                                                           &text, nullptr) != FALSE) {
    list = text;
    (void)LocalFree(text);
  }
  (void)LocalFree(descriptor);
  return list;
}

// Everything from which something runs with the system's rights, or that says what runs. What lies
// within another one comes behind it.
std::vector<std::wstring> Directories(const ServicePlace& place) {
  return {place.directory, place.runtimeDir, place.runtimeDir + L"\\" + kXrayDirectory,
          place.runtimeDir + L"\\" + kTun2socksDirectory};
}

std::wstring Join(const std::vector<std::wstring>& names) {
  std::wstring text;
  for (const std::wstring& name : names) {
    text += (text.empty() ? L"" : L", ") + name;
  }
  return text;
}

// Collects who may write where. What lies in a directory of the same writers goes without saying.
class Writers {
 public:
  void add(const std::wstring& directory, const std::wstring& names) {
    if (names.empty() || (names == names_ && directory.starts_with(directory_ + L"\\")) ||
        (names == names_ && directory == directory_)) {
      return;
    }
    text_ +=
        names == names_ ? L" and to " : (text_.empty() ? L"" : L"; ") + names + L" may write to ";
    text_ += directory;
    names_ = names;
    directory_ = directory;
  }
  const std::wstring& text() const { return text_; }

 private:
  std::wstring text_;
  std::wstring names_;  // of the directory that was added last
  std::wstring directory_;
};

}  // namespace

Finding CheckDirectoryAccess(const Patient& patient) {
  const std::wstring& runtime = patient.place.runtimeDir;
  if (LookAtName(runtime) == FileState::kMissing) {
    return Problem(runtime + L" is not there", L"install the service's files again");
  }
  Writers writers;
  for (const std::wstring& directory : Directories(patient.place)) {
    if (LookAtName(directory) == FileState::kMissing) {
      continue;  // another check misses what should lie there
    }
    const std::wstring descriptor = DescriptorOf(directory);
    if (descriptor.empty()) {
      return Remark(L"the access list of " + directory + L" can't be read",
                    L"run this with administrator's rights");
    }
    writers.add(directory, Join(ForeignWriters(descriptor)));
  }
  if (writers.text().empty()) {
    return Good(L"only administrators may write to " + runtime + L" and to the service's programs");
  }
  return Remark(writers.text(),
                L"the service runs what lies there with the system's rights: move it below "
                L"C:\\Program Files, or take the right away");
}

}  // namespace vpn
