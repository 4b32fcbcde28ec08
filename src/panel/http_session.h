// The one WinHTTP session of the process.
#ifndef TAVRIN_SRC_PANEL_HTTP_SESSION_H_
#define TAVRIN_SRC_PANEL_HTTP_SESSION_H_

#include <windows.h>
#include <winhttp.h>

#include <memory>
#include <type_traits>

namespace vpn {

inline constexpr wchar_t kUserAgent[] = L"Tavrin/0.1";

using SharedInternetHandle = std::shared_ptr<std::remove_pointer_t<HINTERNET>>;

// Opened by the first call and kept until the process ends. Null when it can't be opened; the next
// call tries again. Any thread: the lock is held only while the handle is checked, created and its
// reference copied.
SharedInternetHandle SharedHttpSession();

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_HTTP_SESSION_H_
