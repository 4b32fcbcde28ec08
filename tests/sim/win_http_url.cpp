// WinHTTP: addresses.
#include "tests/sim/call.h"
#include "tests/sim/http_url.h"

#include <winhttp.h>

#include <algorithm>

using sim::Call;

namespace {

// Copies one component into the caller's buffer, if there is one. False when it is too small for
// the text and its NUL; the length then says what is needed.
bool Deliver(const std::wstring& part, LPWSTR buffer, DWORD* length) {
  if (*length == 0) {
    return true;
  }
  const bool fits = part.size() < *length;
  if (fits) {
    *std::copy(part.begin(), part.end(), buffer) = L'\0';
  }
  *length = static_cast<DWORD>(fits ? part.size() : part.size() + 1);
  return fits;
}

// A caller with no buffer for the extra information gets it with the path.
bool DeliverAll(const sim::HttpUrl& url, URL_COMPONENTS* components) {
  const bool together = components->dwExtraInfoLength == 0;
  const std::wstring path = together ? url.path + url.extra : url.path;
  bool fits = Deliver(url.scheme, components->lpszScheme, &components->dwSchemeLength);
  fits &= Deliver(url.user, components->lpszUserName, &components->dwUserNameLength);
  fits &= Deliver(url.password, components->lpszPassword, &components->dwPasswordLength);
  fits &= Deliver(url.host, components->lpszHostName, &components->dwHostNameLength);
  fits &= Deliver(path, components->lpszUrlPath, &components->dwUrlPathLength);
  fits &= Deliver(url.extra, components->lpszExtraInfo, &components->dwExtraInfoLength);
  return fits;
}

// A length without a buffer asks for a pointer into the address, which is not modelled.
bool HasBuffers(const URL_COMPONENTS& c) {
  const auto isMissing = [](LPCWSTR buffer, DWORD length) {
    return length != 0 && buffer == nullptr;
  };
  return !isMissing(c.lpszScheme, c.dwSchemeLength) &&
         !isMissing(c.lpszUserName, c.dwUserNameLength) &&
         !isMissing(c.lpszPassword, c.dwPasswordLength) &&
         !isMissing(c.lpszHostName, c.dwHostNameLength) &&
         !isMissing(c.lpszUrlPath, c.dwUrlPathLength) &&
         !isMissing(c.lpszExtraInfo, c.dwExtraInfoLength);
}

}  // namespace

BOOL WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD flags, URL_COMPONENTS* components) {
  Call call("WinHttpCrackUrl", {url, length, sim::Arg::OfHex(flags)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const bool valid =
      url != nullptr && components != nullptr && components->dwStructSize == sizeof(*components);
  if (!valid || !HasBuffers(*components) || length != 0 || flags != 0) {
    return call.Fail(FALSE, ERROR_INVALID_PARAMETER);  // a given length and flags are not modelled
  }
  sim::HttpUrl parts;
  if (const std::uint32_t code = sim::SplitUrl(url, &parts)) {
    return call.Fail(FALSE, code);
  }
  components->nScheme = parts.secure ? INTERNET_SCHEME_HTTPS : INTERNET_SCHEME_HTTP;
  components->nPort = parts.port;
  return DeliverAll(parts, components) ? TRUE : call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
}
