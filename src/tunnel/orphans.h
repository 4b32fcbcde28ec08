// Children of a run that crashed without its job taking them along.
#ifndef TAVRIN_SRC_TUNNEL_ORPHANS_H_
#define TAVRIN_SRC_TUNNEL_ORPHANS_H_

#include "src/tunnel/tunnel_config.h"

namespace vpn {

// Ends them and, once they are dead, undoes what they leave on the network. True when there were
// any.
bool KillOrphans(const TunnelConfig& config);

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_ORPHANS_H_
