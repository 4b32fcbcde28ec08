// Loopback TCP as far as a port probe sees it, and name resolution.
#ifndef TAVRIN_TESTS_SIM_SOCKETS_H_
#define TAVRIN_TESTS_SIM_SOCKETS_H_

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "tests/sim/core.h"
#include "tests/sim/handles.h"

namespace sim {

// Who listens on which port of the loopback address.
class Listeners {
 public:
  explicit Listeners(Core& core) : core_(core) {}

  // False when the port is taken. Owner 0 is a program that the machine does not model.
  bool Listen(std::uint16_t port, std::uint32_t ownerProcessId = 0);
  void StopListening(std::uint16_t port);
  void StopAllOf(std::uint32_t processId);
  bool IsListening(std::uint16_t port) const;
  std::map<std::uint16_t, std::uint32_t> Owners() const;  // process ids by port

 private:
  Core& core_;
  std::map<std::uint16_t, std::uint32_t> ports_;
};

// How the next connection attempts go, one entry each; without an entry a non-blocking attempt
// gives WSAEWOULDBLOCK and becomes writable when somebody listened at that moment.
struct ConnectPlan {
  enum class Kind {
    kConnectsAtOnce,  // connect gives 0
    kRefusedAtOnce,   // connect fails with `code`
    kSocketError,     // writable, and SO_ERROR gives `code`
    kNeverWritable,   // select times out although somebody listens
    kConnectsAfter,   // `code` virtual milliseconds, whoever listens where
  };
  Kind kind;
  int code = 0;
};

class ConnectPlans {
 public:
  explicit ConnectPlans(Core& core) : core_(core) {}
  void Next(ConnectPlan plan);
  // False when there is none left.
  bool Take(ConnectPlan* plan);

 private:
  Core& core_;
  std::deque<ConnectPlan> plans_;
};

struct HostEntry {
  std::vector<std::string> ipv4{};  // dotted, in the resolver's order
  bool hasIpv6 = false;             // so that a look-up for IPv4 alone finds no data
  int error = 0;                    // the look-up fails with this code
  bool noList = false;              // the look-up succeeds, and hands out null
  // The list begins with an entry of another family and ends with one that has no address.
  bool oddEntries = false;
  std::uint64_t takes = 0;  // virtual milliseconds
};

// Host names; a literal address resolves to itself, everything unknown is WSAHOST_NOT_FOUND.
class Names {
 public:
  explicit Names(Core& core) : core_(core) {}
  void Set(const std::string& name, HostEntry entry);
  void Set(const std::string& name, std::vector<std::string> ipv4);
  HostEntry Find(const std::string& name) const;
  // Every name that was asked for, in order.
  std::vector<std::string> Asked() const;
  void NoteAsked(const std::string& name);

 private:
  Core& core_;
  std::map<std::string, HostEntry> hosts_;
  std::vector<std::string> asked_;
};

struct Socket : Object {
  Family family() const override { return Family::kSocket; }
  std::string Describe() const override { return "socket"; }

  enum class State { kFresh, kConnecting, kConnected, kFailed };
  State state = State::kFresh;
  bool nonBlocking = false;
  int error = 0;  // SO_ERROR
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_SOCKETS_H_
