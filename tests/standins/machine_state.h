// Everything that the stand-ins share about the one simulated machine: its network, what each
// helper program is to do, and which platform calls are to fail. A plain value with a JSON form.
#ifndef TAVRIN_TESTS_STANDINS_MACHINE_STATE_H_
#define TAVRIN_TESTS_STANDINS_MACHINE_STATE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "tests/netmodel/network_model.h"

namespace standins {

inline constexpr std::int64_t kNever = -1;

// The named platform call succeeds `pass` times, then fails `times` times with `code`.
struct Fault {
  std::string call;
  std::uint32_t pass = 0;
  std::uint32_t times = 1;
  std::uint32_t code = 0;
};

struct XrayBehaviour {
  std::int64_t delayMs = 0;            // from the file's acceptance to what follows
  std::int64_t exitCode = kNever;      // ends with this code instead of listening
  bool listens = true;                 // false: stays alive without ever listening
  std::int64_t exitOnAccept = kNever;  // ends with this code at the first connection
  std::int64_t diesAfterMs = kNever;   // counted from "listening"; ends with code 1
};

struct Tun2socksBehaviour {
  std::int64_t delayMs = 0;        // from the start to the adapter, or to the end
  std::int64_t downMs = 0;         // how long the adapter stays down before it is up
  std::int64_t exitCode = kNever;  // ends with this code instead of making an adapter
  bool comesUp = true;             // false: the adapter stays down
  bool defaultNameFirst = false;   // is shown under a Windows default name until it is up
  bool adapterOutlives = false;    // the adapter stays until the next tun2socks clears it away
  bool automaticAddress = false;   // Windows has given the adapter 169.254.7.7 when it comes up
  std::string description = "tun2socks Tunnel";
  std::int64_t diesAfterMs = kNever;  // counted from "up", 0: at that instant; ends with code 1
};

struct NetshBehaviour {
  std::string hangsOn;        // a command line that holds this text never ends; empty: none
  std::int64_t exitCode = 0;  // other than 0: ends with it and changes nothing
};

// An adapter lives as long as the process that made it; the start time tells a process from a
// later one with the same id.
struct AdapterOwner {
  std::uint64_t luid = 0;
  std::uint32_t processId = 0;
  std::uint64_t started = 0;
  bool outlives = false;  // Windows has not got round to removing it
};

struct MachineState {
  netmodel::Network network = netmodel::TypicalNetwork();
  std::vector<AdapterOwner> owners;
  std::vector<Fault> faults;
  std::string heldCall;  // this platform call acts, but does not return before the text changes
  XrayBehaviour xray;
  Tun2socksBehaviour tun2socks;
  NetshBehaviour netsh;
  bool keepsMoments = false;  // when what happened, for benchmarks: see SharedMachine::Note
};

std::string FormatMachineState(const MachineState& state);
// Absent keys keep their defaults. Throws nlohmann::json::exception for a damaged text.
MachineState ParseMachineState(const std::string& text);

// Counts one call: the code with which it is to fail now, or 0.
std::uint32_t TakeFault(MachineState& state, const std::string& call);

}  // namespace standins

#endif  // TAVRIN_TESTS_STANDINS_MACHINE_STATE_H_
