// Addresses as WinHTTP takes them apart.
#ifndef TAVRIN_TESTS_SIM_HTTP_URL_H_
#define TAVRIN_TESTS_SIM_HTTP_URL_H_

#include <cstdint>
#include <string>

namespace sim {

struct HttpUrl {
  std::wstring scheme;
  std::wstring user;
  std::wstring password;
  std::wstring host;  // an IPv6 address keeps its brackets
  std::uint16_t port = 0;
  std::wstring path;   // may be empty
  std::wstring extra;  // the query and the fragment, with their marks
  bool secure = false;
};

// 0, or the platform's code: ERROR_WINHTTP_UNRECOGNIZED_SCHEME, ERROR_WINHTTP_INVALID_URL.
std::uint32_t SplitUrl(const std::wstring& text, HttpUrl* url);

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_HTTP_URL_H_
