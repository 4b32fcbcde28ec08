// platform_calls --out FILE [--quick] [--rounds N]: how often the service calls the platform,
// beside the least that its ordered steps allow. The counts are the same in every run.
#include "tests/bench/rounds.h"
#include "tests/unit/control/platform_calls.h"

namespace {

void Add(bench::Report& report, const char* figure, const unit::CallCounts& counts, int least) {
  report.add(figure, "service", 0, "calls", {static_cast<double>(unit::Total(counts))});
  report.add(figure, "least", 0, "calls", {static_cast<double>(least)});
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Options options = bench::ReadOptions(argc, argv);
  const unit::CountedRun run = unit::CountPlatformCalls();
  if (run.connect.empty() || run.disconnect.empty()) {
    bench::Fail("the connect or the disconnect went wrong");
  }
  bench::Report report(options.out);
  Add(report, "platform-calls-connect", run.connect, unit::Total(unit::LeastOfConnect()));
  Add(report, "platform-calls-disconnect", run.disconnect, unit::Total(unit::LeastOfDisconnect()));
  Add(report, "platform-calls-idle", run.idleMinute, 0);
  return 0;
}
