// Who runs the program, access lists of files, random bytes.
#include "tests/sim/call.h"
#include "tests/sim/resources.h"
#include "tests/sim/text.h"

#include <windows.h>

using sim::Arg;
using sim::Call;

namespace {

constexpr wchar_t kUser[] = L"S-1-5-21-1004336348-1177238915-682003330-1001";

struct Token : sim::Object {
  sim::Family family() const override { return sim::Family::kKernel; }
  std::string Describe() const override { return "token"; }
};

}  // namespace

HANDLE GetCurrentProcess() {
  return reinterpret_cast<HANDLE>(std::intptr_t{-1});
}

BOOL OpenProcessToken(HANDLE /*process*/, DWORD access, HANDLE* token) {
  Call call("OpenProcessToken", {Arg::OfHex(access)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  *token = call.OpenHandle(std::make_shared<Token>());
  return TRUE;
}

// The sid stands behind the record, as the text that it would make.
BOOL GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS /*what*/, LPVOID data, DWORD size,
                         DWORD* needed) {
  Call call("GetTokenInformation", {token});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!call.Kernel<Token>(token)) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  *needed = sizeof(TOKEN_USER);
  if (size < *needed) {
    return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
  }
  static std::wstring user = kUser;
  *static_cast<TOKEN_USER*>(data) = {{user.data(), 0}};
  return TRUE;
}

BOOL ConvertSidToStringSidW(PSID sid, LPWSTR* text) {
  Call call("ConvertSidToStringSidW");
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto copy = std::make_shared<std::wstring>(static_cast<const wchar_t*>(sid));
  *text = copy->data();
  call.Track(copy->data(), sim::kDescriptor, copy);
  return TRUE;
}

BOOL SetFileSecurityW(LPCWSTR name, DWORD information, PSECURITY_DESCRIPTOR descriptor) {
  Call call("SetFileSecurityW", {name, Arg::OfHex(information)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto node = call->files.Find(name);
  const auto text = call->resources.Find(descriptor, sim::kDescriptor);
  if (!node || !text) {
    return call.Fail(FALSE, node ? ERROR_INVALID_PARAMETER : ERROR_FILE_NOT_FOUND);
  }
  node->accessList = sim::Narrow(*std::static_pointer_cast<std::wstring>(text));
  return TRUE;
}

// Never twice the same, and not random.
NTSTATUS BCryptGenRandom(LPVOID algorithm, BYTE* bytes, ULONG count, ULONG flags) {
  Call call("BCryptGenRandom", {count, flags});
  if (call.failed()) {
    return static_cast<NTSTATUS>(call.code());
  }
  if (algorithm != nullptr || flags != BCRYPT_USE_SYSTEM_PREFERRED_RNG) {
    return static_cast<NTSTATUS>(0xC000000D);  // STATUS_INVALID_PARAMETER
  }
  static BYTE next = 0;
  for (ULONG at = 0; at < count; ++at) {
    bytes[at] = ++next;
  }
  return 0;
}
