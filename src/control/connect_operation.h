// The system's central procedure: from a node's name to a running tunnel.
#ifndef TAVRIN_SRC_CONTROL_CONNECT_OPERATION_H_
#define TAVRIN_SRC_CONTROL_CONNECT_OPERATION_H_

#include <string>

#include "src/common/status.h"

namespace vpn {

// An empty `nodeKey`, and one that no node is called, connect to the first node. A running tunnel
// stays up until `TunnelManager` takes over, and so survives a failure before that.
Status ConnectOperation(const std::wstring& nodeKey);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_CONNECT_OPERATION_H_
