#include "client/account/device_identity.h"

#include <windows.h>
#include <bcrypt.h>
#include <sddl.h>

#include <array>

#include "src/common/files.h"
#include "src/common/text.h"
#include "src/common/unique_handle.h"

namespace vpn {
namespace {

constexpr size_t kDigits = 32;

bool IsIdentity(const std::string& text) {
  return text.size() == kDigits && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

// Empty when the platform has no random bytes.
std::string RandomIdentity() {
  std::array<unsigned char, kDigits / 2> bytes{};
  if (BCryptGenRandom(nullptr, bytes.data(), static_cast<ULONG>(bytes.size()),
                      BCRYPT_USE_SYSTEM_PREFERRED_RNG) != 0) {
    return {};
  }
  std::string text;
  for (const unsigned char byte : bytes) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 0x0F];
  }
  return text;
}

// The user's own name in an access list; empty when the platform does not tell. Not the owner of
// the file: a file of an elevated console belongs to the administrators.
std::wstring UserSid() {
  HANDLE opened = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == FALSE) {
    return {};
  }
  const KernelHandle token(opened);
  alignas(TOKEN_USER) std::array<char, 256> buffer{};  // a sid takes 68 bytes at most
  DWORD size = 0;
  LPWSTR text = nullptr;
  if (GetTokenInformation(token.get(), TokenUser, buffer.data(), static_cast<DWORD>(buffer.size()),
                          &size) == FALSE ||
      ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid, &text) ==
          FALSE) {
    return {};
  }
  std::wstring sid = text;
  (void)LocalFree(text);
  return sid;
}

// For the user and the system alone, and nothing inherited.
bool Restrict(const std::wstring& path) {
  const std::wstring sid = UserSid();
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (sid.empty() || ConvertStringSecurityDescriptorToSecurityDescriptorW(
                         (L"D:P(A;;FA;;;" + sid + L")(A;;FA;;;SY)").c_str(), SDDL_REVISION_1,
                         &descriptor, nullptr) == FALSE) {
    return false;
  }
  const bool isSet =
      SetFileSecurityW(path.c_str(),
                       DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                       descriptor) != FALSE;
  (void)LocalFree(descriptor);
  return isSet;
}

std::string ReadIdentity(const std::wstring& path) {
  std::string text;
  return ReadFileBytes(path, text) && IsIdentity(text) ? text : std::string();
}

// Under another name until it is whole and closed to others.
bool Keep(const std::string& identity, const std::wstring& path) {
  const std::wstring draft = path + L".new";
  const bool isKept = WriteFileBytes(draft, "") && Restrict(draft) &&
                      WriteFileBytes(draft, identity) && ReadIdentity(draft) == identity &&
                      MoveFileExW(draft.c_str(), path.c_str(),
                                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE;
  if (!isKept) {
    (void)DeleteFileW(draft.c_str());
  }
  return isKept;
}

}  // namespace

std::wstring DeviceIdentity(const std::wstring& runtimeDir) {
  const std::wstring path = runtimeDir + L'\\' + kDeviceFile;
  std::string identity = ReadIdentity(path);
  std::string text;
  const bool isOthers =
      GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES && !ReadFileBytes(path, text);
  if (identity.empty() && !isOthers) {
    identity = RandomIdentity();
    if (identity.empty() || !Keep(identity, path)) {
      return {};
    }
  }
  return Utf8ToWide(identity);
}

}  // namespace vpn
