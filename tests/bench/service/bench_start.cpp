// From the start of the process to the service's first answer, and the start of an empty executable
// to its end, in turn.
#include "tests/bench/service/daemon.h"
#include "tests/bench/service/exchange.h"
#include "tests/bench/service/record.h"

namespace bench {
namespace {

constexpr unsigned long kPause = 1;  // milliseconds between two looks for the pipe

double TimeToFirstAnswer(const Installation& installation) {
  const double start = Now();
  const auto service = installation.StartDaemon();
  (void)Exchange(kServicePipe, kStatus, kPause);
  const double time = Now() - start;
  Installation::ShutDown(*service);
  return time;
}

double TimeOfEmpty(const Installation& installation) {
  const double start = Now();
  (void)installation.Start(L"bench_empty")->WaitForExitCode();
  return Now() - start;
}

void Measure(const Arguments& arguments) {
  const Installation installation;
  (void)TimeOfEmpty(installation);  // both files are in memory from here on
  (void)TimeToFirstAnswer(installation);
  Samples service{"start", "service", {}};
  Samples empty{"start", "empty", {}};
  const std::size_t rounds = arguments.rounds != 0 ? arguments.rounds : arguments.quick ? 9 : 31;
  for (std::size_t round = 0; round < rounds; ++round) {
    service.values.push_back(TimeToFirstAnswer(installation));
    empty.values.push_back(TimeOfEmpty(installation));
  }
  Append(arguments.out, service);
  Append(arguments.out, empty);
}

}  // namespace
}  // namespace bench

int wmain(int argc, wchar_t** argv) {
  return bench::RunBench(argc, argv, bench::Measure);
}
