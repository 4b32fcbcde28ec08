// The times of the benchmarks. For people: no test depends on one.
#include "tests/bench/figures.h"
#include "tests/sim/machine.h"

namespace {

struct Entry {
  const char* name;
  bench::Cases (*make)(bool quick);
};

constexpr Entry kFigures[] = {
    {"panel-reply", bench::PanelReply},
    {"subscription-base64", bench::SubscriptionBase64},
    {"subscription-plain", bench::SubscriptionPlain},
    {"growth-nodes", bench::GrowthOfNodes},
    {"growth-routes", bench::GrowthOfRoutes},
    {"growth-processes", bench::GrowthOfProcesses},
    {"growth-adapters", bench::GrowthOfAdapters},
    {"growth-pins", bench::GrowthOfPins},
};

}  // namespace

int main(int argc, char** argv) {
  const bench::Options options = bench::ReadOptions(argc, argv);
  bench::Report report(options.out);
  for (const Entry& figure : kFigures) {
    if (options.figure.empty() || options.figure == figure.name) {
      const sim::InstalledMachine machine;
      bench::Measure(figure.name, figure.make(options.quick), options, report);
    }
  }
  return 0;
}
