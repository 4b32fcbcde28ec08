#include "client/doctor/panel_clock.h"

#include <windows.h>
#include <winhttp.h>

#include "src/common/unique_handle.h"
#include "src/panel/endpoints.h"
#include "src/panel/panel_client.h"

namespace vpn {
namespace {

struct InternetTraits : NullIsEmpty<HINTERNET> {
  static void close(HINTERNET value) { (void)WinHttpCloseHandle(value); }
};
using Internet = UniqueHandle<InternetTraits>;

constexpr std::int64_t kTicksPerSecond = 10'000'000;

std::int64_t SecondsOf(const FILETIME& time) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 |
                                   time.dwLowDateTime) /
         kTicksPerSecond;
}

INTERNET_PORT PortOf(const std::wstring& address, bool isSecure) {
  URL_COMPONENTS parts = {};
  parts.dwStructSize = sizeof(parts);
  if (WinHttpCrackUrl(address.c_str(), 0, 0, &parts) != FALSE && parts.nPort != 0) {
    return parts.nPort;
  }
  return isSecure ? INTERNET_DEFAULT_HTTPS_PORT : INTERNET_DEFAULT_HTTP_PORT;
}

}  // namespace

bool SecondsAheadOfPanel(const std::wstring& address, std::int64_t& ahead) {
  const SharedInternetHandle session = SharedHttpSession();
  const bool isSecure = address.starts_with(L"https:");
  const Internet connection(
      WinHttpConnect(session.get(), UrlHost(address).c_str(), PortOf(address, isSecure), 0));
  const Internet request(WinHttpOpenRequest(connection.get(), L"HEAD", L"/", nullptr,
                                            WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
                                            isSecure ? WINHTTP_FLAG_SECURE : 0));
  SYSTEMTIME date = {};
  DWORD size = sizeof(date);
  if (!request ||
      WinHttpSendRequest(request.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA,
                         0, 0, 0) == FALSE ||
      WinHttpReceiveResponse(request.get(), nullptr) == FALSE ||
      WinHttpQueryHeaders(request.get(), WINHTTP_QUERY_DATE | WINHTTP_QUERY_FLAG_SYSTEMTIME,
                          WINHTTP_HEADER_NAME_BY_INDEX, &date, &size,
                          WINHTTP_NO_HEADER_INDEX) == FALSE) {
    return false;
  }
  FILETIME panelTime = {};
  FILETIME now = {};
  GetSystemTimeAsFileTime(&now);
  if (SystemTimeToFileTime(&date, &panelTime) == FALSE) {
    return false;
  }
  ahead = SecondsOf(now) - SecondsOf(panelTime);
  return true;
}

}  // namespace vpn
