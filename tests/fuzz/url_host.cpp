// The host of an address.
#include "src/panel/endpoints.h"

#include <algorithm>

#include "tests/fuzz/fuzz.h"

using fuzz::Require;

namespace {

bool IsDigit(wchar_t unit) {
  return unit >= L'0' && unit <= L'9';
}

// The same rules, from the back: where the host starts and ends within the address.
std::wstring HostByPosition(const std::wstring& url) {
  size_t begin = 0;
  for (size_t at = 0; at + 2 < url.size(); ++at) {
    if (url[at] == L':' && url[at + 1] == L'/' && url[at + 2] == L'/') {
      begin = at + 3;
      break;
    }
  }
  size_t end = begin;
  while (end < url.size() && url[end] != L'/' && url[end] != L'\\' && url[end] != L'?') {
    ++end;
  }
  for (size_t at = end; at > begin; --at) {
    if (url[at - 1] == L'@') {
      begin = at;
      break;
    }
  }
  if (begin < end && url[begin] == L'[') {
    const auto from = url.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto to = url.begin() + static_cast<std::ptrdiff_t>(end);
    const auto close = std::find(from, to, L']');
    return close == to ? std::wstring() : std::wstring(from + 1, close);
  }
  size_t port = end;
  while (port > begin && IsDigit(url[port - 1])) {
    --port;
  }
  const bool hasPort = port < end && port > begin && url[port - 1] == L':';
  return url.substr(begin, (hasPort ? port - 1 : end) - begin);
}

// A host without any mark comes out of an address that is put together around it.
void CheckWhole(const std::wstring& host) {
  if (host.empty() || host.find_first_of(L"/\\?@[]:") != std::wstring::npos) {
    return;
  }
  Require(vpn::UrlHost(host) == host, "a bare host is its own host");
  Require(vpn::UrlHost(L"https://a:b@c@" + host + L":8443/p@q?r=s://t") == host,
          "scheme, user, port, path and query go");
  Require(vpn::UrlHost(L"https://u@[" + host + L"]:443\\x") == host, "brackets and port go");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  const std::wstring url = fuzz::Wide(fuzz::Bytes(data, size));
  const std::wstring host = vpn::UrlHost(url);
  Require(host == HostByPosition(url), "the host is read by its rules");
  Require(host.find_first_of(L"/\\?@") == std::wstring::npos, "a host holds none of these");
  CheckWhole(url);

  const std::wstring trimmed = vpn::TrimEndSlashes(url);
  Require(url.starts_with(trimmed) && !trimmed.ends_with(L'/') && !trimmed.ends_with(L'\\'),
          "no slash is left at the end");
  Require(url.find_first_not_of(L"/\\", trimmed.size()) == std::wstring::npos,
          "nothing but slashes was cut off");
  return 0;
}
