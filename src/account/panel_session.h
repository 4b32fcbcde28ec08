// The panel's credential and the texts around it.
#ifndef TAVRIN_SRC_ACCOUNT_PANEL_SESSION_H_
#define TAVRIN_SRC_ACCOUNT_PANEL_SESSION_H_

#include <windows.h>

#include <string>
#include <string_view>

namespace vpn {

// The credential in a response: "auth_data" or "token", in its data object or anywhere. True when
// there is one; `authData` is empty otherwise.
bool ExtractAuthData(const std::string& response, std::wstring& authData);

// Writes `session.json`; neither value is escaped. False with `error` set when it can't be opened.
bool SaveSession(const std::wstring& path, const std::wstring& email, const std::wstring& authData,
                 std::wstring& error);

// Letters, digits and "-._@" stay; every other byte becomes %XX.
std::string UrlEncode(std::string_view bytes);

// The text with the step and, unless it is 0, the status in full-width brackets behind it. An empty
// text becomes a general one.
std::wstring PanelErrorWithDetail(const std::wstring& text, const std::wstring& step, DWORD status);

// Replaces `error` by the panel's "message" when the response has one.
void PreferPanelMessage(const std::string& response, std::wstring& error);

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_PANEL_SESSION_H_
