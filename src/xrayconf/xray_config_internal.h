// Parts of xray_config.cpp, for its tests.
#ifndef TAVRIN_SRC_XRAYCONF_XRAY_CONFIG_INTERNAL_H_
#define TAVRIN_SRC_XRAYCONF_XRAY_CONFIG_INTERNAL_H_

#include <string>
#include <string_view>

namespace vpn {

// UTF-8 with double quotes and backslashes escaped; every other byte, control bytes included,
// passes as it is.
std::string ToJsonUtf8(const std::wstring& text);

// A colon anywhere (IPv6), or the shape of a dotted IPv4 address; ranges are not checked.
bool IsIpLiteral(std::string_view text);

}  // namespace vpn

#endif  // TAVRIN_SRC_XRAYCONF_XRAY_CONFIG_INTERNAL_H_
