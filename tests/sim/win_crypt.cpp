// Text to bytes.
#include "tests/sim/base64.h"
#include "tests/sim/call.h"

#include <wincrypt.h>

#include <algorithm>
#include <cstring>

using sim::Call;

BOOL CryptStringToBinaryA(LPCSTR text, DWORD length, DWORD flags, BYTE* binary, DWORD* size,
                          DWORD* skipped, DWORD* usedFlags) {
  Call call("CryptStringToBinaryA",
            {length, flags, sim::Arg(std::string(binary == nullptr ? "null" : "buffer"))});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (text == nullptr || size == nullptr) {
    return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
  }
  if (flags != CRYPT_STRING_BASE64 || skipped != nullptr || usedFlags != nullptr) {
    return call.Fail(FALSE, ERROR_NOT_SUPPORTED);  // nothing else is modelled
  }
  const std::string_view given(text, length == 0 ? std::strlen(text) : length);
  std::string bytes;
  const bool decoded = sim::DecodeBase64(given, &bytes);
  const DWORD room = *size;
  *size = static_cast<DWORD>(bytes.size());
  if (!decoded) {
    return call.Fail(FALSE, ERROR_INVALID_DATA);
  }
  if (binary == nullptr) {
    return TRUE;
  }
  if (room < bytes.size()) {
    return call.Fail(FALSE, ERROR_MORE_DATA);
  }
  std::copy(bytes.begin(), bytes.end(), binary);
  return TRUE;
}
