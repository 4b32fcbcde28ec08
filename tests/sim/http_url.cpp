#include "tests/sim/http_url.h"

#include <winhttp.h>

#include <string_view>

#include "tests/sim/text.h"

namespace sim {
namespace {

constexpr size_t kNone = std::wstring_view::npos;

// The text in front of the first of `marks`, which is cut off `rest`.
std::wstring_view CutInFront(std::wstring_view& rest, std::wstring_view marks) {
  const std::wstring_view front = rest.substr(0, rest.find_first_of(marks));
  rest.remove_prefix(front.size());
  return front;
}

void SplitUser(std::wstring_view& authority, HttpUrl* url) {
  const size_t at = authority.rfind(L'@');
  if (at == kNone) {
    return;
  }
  const std::wstring_view user = authority.substr(0, at);
  const size_t colon = user.find(L':');
  url->user = user.substr(0, colon);
  url->password = colon == kNone ? std::wstring_view() : user.substr(colon + 1);
  authority.remove_prefix(at + 1);
}

// An empty text keeps the scheme's own port.
bool ReadPort(std::wstring_view digits, std::uint16_t* port) {
  if (digits.empty()) {
    return true;
  }
  std::uint32_t number = 0;
  for (const wchar_t digit : digits) {
    if (digit < L'0' || digit > L'9' || number > 65535) {
      return false;
    }
    number = number * 10 + static_cast<std::uint32_t>(digit - L'0');
  }
  *port = static_cast<std::uint16_t>(number);
  return number <= 65535;
}

bool SplitAuthority(std::wstring_view authority, HttpUrl* url) {
  SplitUser(authority, url);
  const size_t bracket = authority.starts_with(L'[') ? authority.find(L']') : 0;
  if (bracket == kNone) {
    return false;
  }
  const size_t colon = authority.find(L':', bracket);
  url->host = authority.substr(0, colon);
  return !url->host.empty() &&
         (colon == kNone || ReadPort(authority.substr(colon + 1), &url->port));
}

}  // namespace

std::uint32_t SplitUrl(const std::wstring& text, HttpUrl* url) {
  const size_t colon = text.find(L':');
  url->scheme = text.substr(0, colon);
  const std::wstring folded = Fold(url->scheme);
  url->secure = folded == L"HTTPS";
  if (colon == kNone || (!url->secure && folded != L"HTTP")) {
    return ERROR_WINHTTP_UNRECOGNIZED_SCHEME;
  }
  url->port = url->secure ? INTERNET_DEFAULT_HTTPS_PORT : INTERNET_DEFAULT_HTTP_PORT;
  std::wstring_view rest = std::wstring_view(text).substr(colon + 1);
  if (!rest.starts_with(L"//")) {
    return ERROR_WINHTTP_INVALID_URL;
  }
  rest.remove_prefix(2);
  if (!SplitAuthority(CutInFront(rest, L"/?#"), url)) {
    return ERROR_WINHTTP_INVALID_URL;
  }
  url->path = CutInFront(rest, L"?#");
  url->extra = rest;
  return 0;
}

}  // namespace sim
