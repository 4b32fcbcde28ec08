#include "tests/standins/machine_state.h"

#include "tests/netmodel/network_json.h"

namespace standins {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Fault, call, pass, times, code)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(XrayBehaviour, delayMs, exitCode, listens,
                                                exitOnAccept, diesAfterMs)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Tun2socksBehaviour, delayMs, downMs, exitCode,
                                                comesUp, defaultNameFirst, adapterOutlives,
                                                automaticAddress, description, diesAfterMs)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(NetshBehaviour, hangsOn, exitCode)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(AdapterOwner, luid, processId, started, outlives)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(MachineState, network, owners, faults, heldCall,
                                                xray, tun2socks, netsh, keepsMoments)

std::string FormatMachineState(const MachineState& state) {
  return nlohmann::json(state).dump(2) + "\n";
}

MachineState ParseMachineState(const std::string& text) {
  return nlohmann::json::parse(text).get<MachineState>();
}

std::uint32_t TakeFault(MachineState& state, const std::string& call) {
  for (Fault& fault : state.faults) {
    if (fault.call != call || fault.times == 0) continue;
    if (fault.pass > 0) {
      --fault.pass;
      return 0;
    }
    --fault.times;
    return fault.code;
  }
  return 0;
}

}  // namespace standins
