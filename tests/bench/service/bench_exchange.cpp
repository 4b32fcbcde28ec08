// A `status` exchange with the service and one with the echo server in turn, from the client's
// side.
#include <stdexcept>

#include "tests/bench/service/daemon.h"
#include "tests/bench/service/exchange.h"
#include "tests/bench/service/record.h"

namespace bench {
namespace {

constexpr wchar_t kEchoPipe[] = L"\\\\.\\pipe\\TavrinBenchEcho";
constexpr std::size_t kExchanges = 400;  // in one round, with each server
constexpr std::size_t kQuickExchanges = 150;
constexpr std::size_t kWarmUp = 100;
constexpr double kPercent = 0.01;

struct Server {
  std::string subject;
  const wchar_t* pipe;
  std::vector<double> round{};
  std::vector<double> all{};
  std::vector<double> medians{};
  std::vector<double> tails{};

  void MeasureOne() {
    const double start = Now();
    const std::string reply = Exchange(pipe, kStatus);
    round.push_back(Now() - start);
    if (reply != kStatusReply) throw std::runtime_error("another reply: " + reply);
  }
  void EndRound() {
    medians.push_back(Quantile(round, 0.50));
    tails.push_back(Quantile(round, 0.99));
    all.insert(all.end(), round.begin(), round.end());
    round.clear();
  }
};

// For the plot: the times that 1 %, 2 % … 99 % of all exchanges did not exceed.
std::vector<double> Percentiles(const std::vector<double>& all) {
  std::vector<double> values;
  for (int percent = 1; percent < 100; ++percent)
    values.push_back(Quantile(all, percent * kPercent));
  return values;
}

void Measure(const Arguments& arguments) {
  const Installation installation;
  const auto service = installation.StartDaemon();
  const auto echo =
      installation.Start(L"bench_echo_server", L"\"" + installation.box.root() + L"\\echo.log\"");
  for (std::size_t i = 0; i < kWarmUp; ++i) {
    (void)Exchange(kServicePipe, kStatus);
    (void)Exchange(kEchoPipe, kStatus);
  }
  Server servers[] = {{"service", kServicePipe}, {"echo", kEchoPipe}};
  const std::size_t rounds = arguments.rounds != 0 ? arguments.rounds : arguments.quick ? 9 : 31;
  for (std::size_t round = 0; round < rounds; ++round) {
    for (std::size_t i = arguments.quick ? kQuickExchanges : kExchanges; i > 0; --i) {
      for (Server& server : servers) server.MeasureOne();
    }
    for (Server& server : servers) server.EndRound();
  }
  for (const Server& server : servers) {
    Append(arguments.out, {"status-exchange-p50", server.subject, server.medians});
    Append(arguments.out, {"status-exchange-p99", server.subject, server.tails});
    Append(arguments.out, {"status-exchange-percentiles", server.subject, Percentiles(server.all)});
  }
  Installation::ShutDown(*service);
}

}  // namespace
}  // namespace bench

int wmain(int argc, wchar_t** argv) {
  return bench::RunBench(argc, argv, bench::Measure);
}
