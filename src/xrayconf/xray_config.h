// Turns the chosen node into the configuration file of the Xray child.
#ifndef TAVRIN_SRC_XRAYCONF_XRAY_CONFIG_H_
#define TAVRIN_SRC_XRAYCONF_XRAY_CONFIG_H_

#include <string>
#include <string_view>

#include "src/common/node_info.h"

namespace vpn {

// Writes the configuration for `node`, whose traffic and all direct traffic leave through the
// interface `interfaceAlias`. Resolves a node that is given by host name, and blocks for as long as
// that takes. False with `error` set when the file can't be opened; whether the write itself worked
// is not tested.
bool GenerateXrayConfig(const NodeInfo& node, const std::wstring& interfaceAlias,
                        const std::wstring& configPath, std::wstring& error);

// UTF-8 with double quotes and backslashes escaped; every other byte, control bytes included,
// passes as it is.
std::string ToJsonUtf8(const std::wstring& text);

// A colon anywhere (IPv6), or the shape of a dotted IPv4 address; ranges are not checked.
bool IsIpLiteral(std::string_view text);

// First IPv4 address of the host as dotted text; empty when there is none.
std::string ResolveFirstIpv4(const std::string& host);

}  // namespace vpn

#endif  // TAVRIN_SRC_XRAYCONF_XRAY_CONFIG_H_
