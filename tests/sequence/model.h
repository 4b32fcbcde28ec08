// The reference model: what must be so after each event, said anew from how the service is meant to
// behave. It shares no code with src/, makes no platform call, and knows the network as a value.
#ifndef TAVRIN_TESTS_SEQUENCE_MODEL_H_
#define TAVRIN_TESTS_SEQUENCE_MODEL_H_

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "tests/netmodel/network_model.h"
#include "tests/sequence/conditions.h"
#include "tests/sequence/events.h"

namespace sequence {

using Lines = std::vector<std::string>;

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

class Model {
 public:
  explicit Model(const netmodel::Network& network) : network_(network), untouched_(network) {}

  // A name of the table.
  std::string State() const;
  // False when the moment does not tell what the event has to do: a child may or may not be gone.
  bool IsCertain(std::uint64_t now, std::uint64_t longest) const;
  // True when the service whose turn it is would start beside children of the other one, which it
  // does not hunt while it has a tunnel of its own: two adapters of one name then race.
  bool IsCrowded() const;
  Expected Apply(const Event& event, std::uint64_t now);
  void End(std::uint64_t now);  // of the event, when everything has come to rest
  // Takes over what an event of open outcome has left; all services were told to disconnect.
  void Adopt(const netmodel::Network& network, std::vector<ChildPointer> children,
             const std::deque<size_t>& turns, const std::string& config);
  bool IsRunning(size_t slot) const { return services_[slot].runs; }

  const netmodel::Network& network() const { return network_; }
  Lines Alive() const;    // names of the children, sorted
  Lines Handles() const;  // of all services, sorted
  // What the generated configuration names: node and interface; `none` for no file, empty for an
  // empty one.
  std::string config() const { return config_; }
  // Milliseconds since the account of the service whose turn it is was stored; 0 for none.
  std::uint64_t CacheAge(std::uint64_t now) const;

 private:
  struct Service {
    bool runs = false, stops = false, isWatched = false;
    std::string mode;
    std::uint64_t cacheTime = 0;
    std::vector<Node> cache;
    // Of the tunnel.
    bool changed = false, hasJob = false, fromPanel = false;
    ChildPointer xray, tun;
    std::string alias, gateway, tunAlias, node;
    Lines pins;
  };
  struct Fetched {
    std::string failure;
    std::vector<Node> nodes;
    bool ok = false;
  };

  void StartService(size_t slot, const std::string& mode);
  void EndService(size_t slot);
  void StopService(size_t slot);
  void Wake(size_t slot);
  void KillService(size_t slot, bool childrenSurvive);
  // What the service whose turn it is makes of a client; `op` null: of one that sends no request.
  void Serve(const char* op, const std::string& node, bool clientLeaves, const char* readError);
  std::string Carry(Service& service, const std::string& op, const std::string& node, bool* ok);
  void KillChild(const char* name);
  Fetched Fetch();
  Fetched FetchCached(Service& service);
  std::string Connect(Service& service, const std::string& key);
  std::string StartTunnel(Service& service, const Node& node);
  std::string BringUp(Service& service);
  void StopTunnel(Service& service);
  bool KillOrphans();
  bool ChildListens() const;
  std::string Refusal() const;
  bool FindPhysical(std::string* alias, std::string* gateway) const;
  void Pin(Service& service, const std::string& address);
  void Terminate(const ChildPointer& child);
  void Die(const ChildPointer& child);
  bool Runs(const Service& service) const;
  void Route(bool add, const std::string& alias, const std::string& destination,
             const std::string& nextHop, int metric);
  void ClearTun(const std::string& alias);
  void Netsh(const std::string& rest);
  void Log(const std::string& line);
  void Trace(const std::string& label);

  bool IsTouched() const;

  netmodel::Network network_;
  netmodel::Network untouched_;  // what it would be had no service ever run
  Conditions conditions_;
  std::array<Service, 2> services_;
  std::deque<size_t> turns_;  // of the services that wait for a client
  std::vector<ChildPointer> children_;
  std::string config_ = "none";
  bool portTaken_ = false;
  std::uint64_t now_ = 0;  // moves with what takes time before the tunnel is touched
  Expected expected_;
};

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_MODEL_H_
