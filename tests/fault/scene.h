// The machines on which the runs take place.
#ifndef TAVRIN_TESTS_FAULT_SCENE_H_
#define TAVRIN_TESTS_FAULT_SCENE_H_

#include <ostream>
#include <string>
#include <vector>

#include "tests/fault/network_lines.h"
#include "tests/netmodel/network_model.h"
#include "tests/sim/machine.h"

namespace fault {

enum class Start {
  kIdle,     // the first connect
  kUp,       // a connect while a tunnel is up
  kOrphans,  // a killed run's children and settings are still there
};

struct Scene {
  const char* name;
  Start start = Start::kIdle;
  bool panel = false;             // the account and four hosts come from a panel
  std::vector<std::string> pins;  // in the order in which the start pins them; the node is last
};

const std::vector<Scene>& AllScenes();
void PrintTo(const Scene& scene, std::ostream* out);

// One machine in one scene.
class Stage {
 public:
  explicit Stage(const Scene& scene);

  // Does in this process what comes before the calls that count. False when that failed.
  bool Prepare() const;

  const Scene& scene;
  sim::InstalledMachine machine;
  netmodel::Network before;  // as no run has touched it
  netmodel::Network start;   // with what the killed run of `kOrphans` left

  // Everything of `before` that no run may change at any time: all but the IPv6 settings of the
  // physical interface and its IPv6 default route.
  Lines Foreign() const;
  Lines Now() const;
};

}  // namespace fault

#endif  // TAVRIN_TESTS_FAULT_SCENE_H_
