// The one synchronous call to the panel, on WinHTTP.
#ifndef TAVRIN_SRC_PANEL_HTTP_REQUEST_H_
#define TAVRIN_SRC_PANEL_HTTP_REQUEST_H_

#include <windows.h>
#include <winhttp.h>

#include <memory>
#include <string>
#include <type_traits>

namespace vpn {

inline constexpr wchar_t kUserAgent[] = L"Tavrin/0.1";

using SharedInternetHandle = std::shared_ptr<std::remove_pointer_t<HINTERNET>>;

// The WinHTTP session of the process, opened by the first call and kept until the process ends.
// Null when it can't be opened; the next call tries again. Any thread: the lock is held only while
// the handle is checked, created and its reference copied.
SharedInternetHandle SharedSession();

// Sends one request and reads the whole answer, however large. True exactly if an answer came with
// a status below 400; a status that can't be read counts as 0, hence as success. `response` is
// untouched until an answer comes, and then holds its body whatever the status. `error` is set on
// failure only. `body` is sent as it stands; `contentType` counts only with a body; an empty
// `authorization` is not sent. A null or empty `userAgent` means `kUserAgent`. `statusOut` may be
// null: 0 on entry, the HTTP status after an answer, the code (12000 or above) when connecting,
// sending or receiving failed. Blocks for up to the sum of the session's time-outs.
bool HttpRequest(const std::wstring& method, const std::wstring& url,
                 const std::wstring& authorization, const std::string& body,
                 const std::wstring& contentType, std::string& response, std::wstring& error,
                 const wchar_t* userAgent, DWORD* statusOut);

// The user's text for a WinHTTP error code (winhttp.h).
std::wstring HttpErrorText(DWORD code);

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_HTTP_REQUEST_H_
