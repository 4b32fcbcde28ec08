// The two shapes of request that nearly every panel operation makes.
#ifndef TAVRIN_SRC_PANEL_PANEL_CALL_H_
#define TAVRIN_SRC_PANEL_PANEL_CALL_H_

#include "src/panel/http_request.h"

namespace vpn {

inline constexpr wchar_t kJsonType[] = L"application/json";

// `HttpRequest` with GET and no body.
inline bool GetFromPanel(const std::wstring& url, const std::wstring& authorization,
                         std::string& response, std::wstring& error, DWORD* statusOut = nullptr) {
  return HttpRequest(L"GET", url, authorization, "", kJsonType, response, error, kUserAgent,
                     statusOut);
}

// `HttpRequest` with POST and a JSON body.
inline bool PostToPanel(const std::wstring& url, const std::wstring& authorization,
                        const std::string& body, std::string& response, std::wstring& error,
                        DWORD* statusOut = nullptr) {
  return HttpRequest(L"POST", url, authorization, body, kJsonType, response, error, kUserAgent,
                     statusOut);
}

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_PANEL_CALL_H_
