// What the machine shows after an event, in the words of the model.
#ifndef TAVRIN_TESTS_SEQUENCE_OBSERVATION_H_
#define TAVRIN_TESTS_SEQUENCE_OBSERVATION_H_

#include <string>
#include <vector>

#include "tests/sequence/model.h"
#include "tests/sim/machine.h"

namespace sequence {

struct Observed {
  std::string reply;
  Lines log;
  Lines trace;  // labels
  // What the calls of the event changed, in order: `start xray.exe`, `end xray.exe`, `job`,
  // `add "以太网" 203.0.113.77/32 via 192.168.1.1 metric 1`, `delete …`, `address …`,
  // `name server "1.1.1.1"`, `netsh interface …`.
  Lines acts;
  Lines requests;  // to the panel
};

class Observer {
 public:
  explicit Observer(sim::Machine& machine) : machine_(machine) {}

  // The next look sees only what comes from now on.
  void Begin();
  Observed Look(const std::string& reply);

 private:
  std::string Whole(const wchar_t* path) const;

  sim::Machine& machine_;
  std::string log_;
  std::string trace_;
};

Lines AliveChildren(sim::Machine& machine);
Lines OpenHandles(sim::Machine& machine);
Lines NetworkLines(sim::Machine& machine);
// Node and interface that the generated configuration names: `198.51.100.7 on 以太网`; `none` when
// there is no file, and empty when it is empty.
std::string ConfigOf(sim::Machine& machine);
std::vector<ChildPointer> ChildrenOf(sim::Machine& machine);

// `what: + line` for what is there beyond the expected, `what: - line` for what is missing.
Lines Differences(const Expected& expected, const Observed& observed);
// Of everything that lasts: network, children, handles, configuration.
Lines Differences(const Model& model, sim::Machine& machine);

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_OBSERVATION_H_
