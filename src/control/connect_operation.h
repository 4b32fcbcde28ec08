// The system's central procedure: from a node's name to a running tunnel.
#ifndef TAVRIN_SRC_CONTROL_CONNECT_OPERATION_H_
#define TAVRIN_SRC_CONTROL_CONNECT_OPERATION_H_

#include <string>

namespace vpn {

// An empty `nodeKey`, and one that no node is called, connect to the first node. The result is
// empty on success, else one line for the user. A running tunnel stays up until `TunnelManager`
// takes over, and so survives a failure before that.
std::wstring ConnectOperation(const std::wstring& nodeKey);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_CONNECT_OPERATION_H_
