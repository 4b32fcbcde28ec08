// The HTTP API of the panel, or of the device service beside it: one synchronous call, on WinHTTP.
#ifndef TAVRIN_SRC_PANEL_PANEL_CLIENT_H_
#define TAVRIN_SRC_PANEL_PANEL_CLIENT_H_

#include <windows.h>
#include <winhttp.h>

#include <memory>
#include <string>
#include <type_traits>

namespace vpn {

inline constexpr wchar_t kUserAgent[] = L"Tavrin/0.1";
inline constexpr wchar_t kJsonType[] = L"application/json";
inline constexpr wchar_t kFormType[] = L"application/x-www-form-urlencoded";

using SharedInternetHandle = std::shared_ptr<std::remove_pointer_t<HINTERNET>>;

// The HTTP session of the process, opened by the first call and kept until the process ends. Null
// when it can't be opened; the next call tries again. Any thread: the lock is held only while the
// handle is checked, created and its reference copied.
SharedInternetHandle SharedHttpSession();

struct PanelReply {
  // An answer came; `body` holds it, whatever its status.
  bool answered = false;
  // That of the answer, 0 when it can't be read. The platform's code, 12000 or above, when
  // connecting, sending or receiving failed.
  DWORD status = 0;
  std::string body{};
  // The user's line for a request that failed; every failure has one.
  std::wstring error{};

  // An answer came with a status below 400; one that can't be read counts as such.
  bool ok() const { return error.empty(); }
};

// Each request is sent once and its whole answer read, however large, which takes at most the sum
// of the HTTP session's time-outs.
struct PanelClient {
  std::wstring base;          // with scheme; a path is appended as it stands
  std::wstring credential{};  // sent as two headers, unless it is empty
  std::wstring userAgent{};   // empty means `kUserAgent`

  [[nodiscard]] PanelReply get(const std::wstring& path) const;

  // The body is sent as it stands; the content type counts only with one.
  [[nodiscard]] PanelReply post(const std::wstring& path, const std::string& body,
                                const wchar_t* contentType = kJsonType) const;

  // For requests that carry no credential.
  PanelClient signedOut() const { return {.base = base}; }

 private:
  PanelReply send(const wchar_t* method, const std::wstring& path, const std::string& body,
                  const wchar_t* contentType) const;
};

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_PANEL_CLIENT_H_
