// Turns the chosen node into the configuration file of the Xray child.
#ifndef TAVRIN_SRC_XRAYCONF_XRAY_CONFIG_H_
#define TAVRIN_SRC_XRAYCONF_XRAY_CONFIG_H_

#include <string>

#include "src/common/node_info.h"
#include "src/common/status.h"

namespace vpn {

// Writes the configuration for `node`, whose traffic and all direct traffic leave through the
// interface `interfaceAlias`. Resolves a node that is given by host name, and blocks for as long as
// that takes. Fails when the file can't be opened; whether the write itself worked is not tested.
Status GenerateXrayConfig(const NodeInfo& node, const std::wstring& interfaceAlias,
                          const std::wstring& configPath);

}  // namespace vpn

#endif  // TAVRIN_SRC_XRAYCONF_XRAY_CONFIG_H_
