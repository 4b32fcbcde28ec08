// The machine as the reference model knows it: a value, which events change and which the services
// change as the model says. What a service does to it is noted as one of the acts to expect.
#ifndef TAVRIN_TESTS_SEQUENCE_KNOWN_MACHINE_H_
#define TAVRIN_TESTS_SEQUENCE_KNOWN_MACHINE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/netmodel/network_model.h"
#include "tests/sequence/conditions.h"

namespace sequence {

using Lines = std::vector<std::string>;

inline constexpr char kXray[] = "xray.exe";
inline constexpr char kTun[] = "tun2socks-windows-amd64.exe";

// What one event has to show. A line that ends in `*` stands for every line that begins so.
struct Expected {
  std::string reply;  // its text, `none` (closed without one), `nobody` (no server), or empty
  Lines log;          // of the service
  Lines trace;        // the labels of the connects
  Lines acts;         // changes of the machine, in order: see Observation
  Lines requests;     // to the panel
};

struct Child {
  std::string name;
  bool listens = false;
  bool isStubborn = false;
  bool isOrphan = false;
  bool dead = false;
  std::uint64_t luid = 0;                  // of its adapter
  std::uint64_t diesFrom = 0, diesTo = 0;  // the span in which a stubborn one that was ended goes
};
using ChildPointer = std::shared_ptr<Child>;

struct KnownMachine {
  explicit KnownMachine(const netmodel::Network& before) : network(before), untouched(before) {}

  void Begin(std::uint64_t moment);  // of an event
  void End(std::uint64_t moment);    // of it, when everything has come to rest

  void Log(const std::string& line);
  void Trace(const std::string& label);
  void Act(const std::string& act);
  void Netsh(const std::string& rest);
  // With an interface that nobody knows by this name, nothing.
  void Route(bool add, const std::string& alias, const std::string& destination,
             const std::string& nextHop, int metric);
  void SetAddress(const std::string& alias, const std::string& address);
  void SetNameServer(const std::string& alias, const std::string& server);
  ChildPointer Start(const char* name);
  // By its service. The adapter stays for a little while, which only what follows at once can see.
  void Terminate(const ChildPointer& child);
  void Die(const ChildPointer& child);
  void KillChild(const char* name);  // by someone else
  // An event that changes the network, and nothing for any other.
  void Change(const std::string& name, const std::string& value);

  Lines Alive() const;  // names of the children, sorted
  bool ChildListens() const;
  // True while there is something on the network that only a service may have brought.
  bool IsTouched() const;
  // False when the moment does not tell what an event has to do: a child may or may not be gone.
  bool IsCertain(std::uint64_t moment, std::uint64_t longest) const;

  netmodel::Network network;
  netmodel::Network untouched;  // what it would be had no service ever run
  Conditions conditions;
  std::vector<ChildPointer> children;
  // What the generated configuration names: node and interface; `none` for no file, empty for an
  // empty one.
  std::string config = "none";
  bool portTaken = false;
  std::uint64_t now = 0;  // moves with what takes time before the tunnel is touched
  Expected expected;
};

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_KNOWN_MACHINE_H_
