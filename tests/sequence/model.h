// The reference model: what must be so after each event, said anew from how the service is meant to
// behave. It shares no code with src/, makes no platform call, and knows the network as a value.
#ifndef TAVRIN_TESTS_SEQUENCE_MODEL_H_
#define TAVRIN_TESTS_SEQUENCE_MODEL_H_

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "tests/sequence/events.h"
#include "tests/sequence/known_machine.h"
#include "tests/sequence/model_tunnel.h"

namespace sequence {

class Model {
 public:
  explicit Model(const netmodel::Network& network) : machine_(network) {}

  // A name of the table.
  std::string State() const;
  // True when the service whose turn it is would start beside children of the other one, which it
  // does not hunt while it has a tunnel of its own: two adapters of one name then race.
  bool IsCrowded() const;
  Expected Apply(const Event& event, std::uint64_t now);
  void End(std::uint64_t now) { machine_.End(now); }
  // Takes over what an event of open outcome has left; all services were told to disconnect.
  void Adopt(const netmodel::Network& network, std::vector<ChildPointer> children,
             const std::deque<size_t>& turns, const std::string& config);

  const KnownMachine& machine() const { return machine_; }
  Lines Handles() const;  // of all services, sorted
  // Milliseconds since the account of the service whose turn it is was stored; 0 for none.
  std::uint64_t CacheAge(std::uint64_t now) const;

 private:
  struct Service {
    bool runs = false, stops = false, isWatched = false;
    std::string mode;
    std::uint64_t cacheTime = 0;
    std::vector<Node> cache;
    ModelTunnel tunnel;
  };
  struct Fetched {
    std::string failure;
    std::vector<Node> nodes;
    bool ok = false;
  };

  void StartService(size_t slot, const std::string& mode);
  void EndService(size_t slot);
  void StopService(size_t slot);
  void KillService(size_t slot, bool childrenSurvive);
  // What the service whose turn it is makes of a client; `op` null: of one that sends no request.
  void Serve(const char* op, const std::string& node, bool clientLeaves, const char* readError);
  std::string Carry(Service& service, const std::string& op, const std::string& node, bool* ok);
  Fetched Fetch();
  Fetched FetchCached(Service& service);
  std::string Connect(Service& service, const std::string& key);

  KnownMachine machine_;
  std::array<Service, 2> services_;
  std::deque<size_t> turns_;  // of the services that wait for a client
};

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_MODEL_H_
