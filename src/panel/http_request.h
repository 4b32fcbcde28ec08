// One synchronous HTTP call, on WinHTTP.
#ifndef TAVRIN_SRC_PANEL_HTTP_REQUEST_H_
#define TAVRIN_SRC_PANEL_HTTP_REQUEST_H_

#include <windows.h>

#include <string>

namespace vpn {

struct HttpRequest {
  std::wstring method = L"GET";
  std::wstring url{};          // with scheme
  std::wstring credential{};   // sent as two headers; not sent when empty
  std::string body{};          // sent as it stands
  std::wstring contentType{};  // counts only with a body
  std::wstring userAgent{};    // empty means that of the HTTP session
};

struct HttpReply {
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

// Sends the request and reads the whole answer, however large. Blocks for up to the sum of the HTTP
// session's time-outs; nothing is retried.
[[nodiscard]] HttpReply SendHttpRequest(const HttpRequest& request);

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_HTTP_REQUEST_H_
