#include "tests/standins/iphlpapi_call.h"

#include <cstdio>
#include <exception>

#include "tests/standins/shared_machine.h"

namespace standins {
namespace {

constexpr DWORD kHeldPause = 5;  // milliseconds

// What the last call took. It is noted within the next one: the writing takes time as well, which
// is not the caller's either. The service makes these calls on one thread.
std::uint64_t g_lastStart = 0;
std::uint64_t g_lastEnd = 0;

bool IsHeld(const char* call) {
  return SharedMachine().state().heldCall == call;
}

void NoteLastCall(const SharedMachine& machine) {
  if (g_lastEnd != 0) {
    machine.Note("network call of " + std::to_string(g_lastEnd - g_lastStart), g_lastStart);
  }
}

// Carries the call out in one turn at the machine; `held` tells whether it has to wait behind it.
std::uint32_t AnswerInTurn(const char* call, const Describe& describe, const Act& act, bool& held) {
  SharedMachine machine;
  NoteLastCall(machine);
  held = machine.state().heldCall == call;
  netmodel::Network& network = machine.state().network;
  const std::string line = std::string(call) + "(" + describe(network) + ") = ";
  std::uint32_t code = TakeFault(machine.state(), call);
  if (code == 0) code = act(network);
  machine.Log(line + std::to_string(code));
  return code;
}

}  // namespace

std::uint32_t Answer(const char* call, const Describe& describe, const Act& act) {
  try {
    bool held = false;
    const std::uint64_t start = MomentNow();
    const std::uint32_t code = AnswerInTurn(call, describe, act, held);
    while (held) {
      Sleep(kHeldPause);
      held = IsHeld(call);
    }
    g_lastStart = start;
    g_lastEnd = MomentNow();
    return code;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s: %s\n", call, failure.what());
    return ERROR_GEN_FAILURE;
  }
}

void Note(const char* call, const std::string& arguments) {
  try {
    SharedMachine machine;
    machine.Log(std::string(call) + "(" + arguments + ")");
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s: %s\n", call, failure.what());
  }
}

std::string NameOf(const netmodel::Network& network, std::uint64_t luid) {
  const netmodel::Adapter* adapter = network.FindByLuid(luid);
  return adapter != nullptr ? adapter->friendlyName : "luid " + std::to_string(luid);
}

std::uint32_t Ipv4Of(const SOCKADDR_INET& address) {
  return address.si_family == AF_INET ? ntohl(address.Ipv4.sin_addr.s_addr) : 0;
}

SOCKADDR_INET SocketAddressOf(std::uint32_t address) {
  SOCKADDR_INET result{};
  result.Ipv4.sin_family = AF_INET;
  result.Ipv4.sin_addr.s_addr = htonl(address);
  return result;
}

}  // namespace standins
