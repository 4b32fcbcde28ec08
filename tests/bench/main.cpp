// The times of the benchmarks. For people: no test depends on one.
#include <algorithm>
#include <iterator>

#include "tests/bench/figures.h"
#include "tests/sim/machine.h"

namespace {

constexpr bench::Figure (*kFigures[])(bool quick) = {bench::PanelReply, bench::SubscriptionBase64,
                                                     bench::SubscriptionPlain};

}  // namespace

int main(int argc, char** argv) {
  const bench::Options options = bench::ReadOptions(argc, argv);
  const sim::InstalledMachine machine;
  bench::Report report(options.out);
  for (const auto make : kFigures) {
    const bench::Figure figure = make(options.quick);
    if (options.figure.empty() || options.figure == figure.name) {
      bench::Measure(figure, options, report);
    }
  }
  return 0;
}
