// The user's line about a request to the panel that failed.
#ifndef TAVRIN_SRC_ACCOUNT_FAILURE_TEXT_H_
#define TAVRIN_SRC_ACCOUNT_FAILURE_TEXT_H_

#include <windows.h>

#include <initializer_list>
#include <string>

namespace vpn {

// The "message" in a response; empty when it has none.
std::wstring MessageIn(const std::string& response);

// The first text that is not empty. The last one of a list may be for a failure that told nothing:
// so far every failed request has a text, but the user must never read an empty line.
std::wstring FirstText(std::initializer_list<std::wstring> texts);

// The text with the step and, unless it is 0, the status in full-width brackets behind it. An empty
// text becomes a general one.
std::wstring PanelErrorWithDetail(const std::wstring& text, const std::wstring& step, DWORD status);

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_FAILURE_TEXT_H_
