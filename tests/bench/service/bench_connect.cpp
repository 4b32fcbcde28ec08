// Connects with their waits taken out, the share of each step, and how late the service notices
// what it waits for.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <stdexcept>
#include <utility>

#include "tests/bench/service/daemon.h"
#include "tests/bench/service/exchange.h"
#include "tests/bench/service/moments.h"
#include "tests/bench/service/record.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/standins/shared_machine.h"

namespace bench {
namespace {

constexpr double kNanosecondsPerMillisecond = 1e6;

// What the service does between two looks for the port: an attempt that is refused, and the pause.
double PeriodOfPortLook() {
  constexpr u_short kClosedPort = 1;
  constexpr DWORD kPause = 5;  // milliseconds
  const double start = Now();
  const SOCKET attempt = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  u_long nonBlocking = 1;
  ioctlsocket(attempt, static_cast<long>(FIONBIO), &nonBlocking);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(kClosedPort);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  connect(attempt, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  fd_set writable;
  FD_ZERO(&writable);
  FD_SET(attempt, &writable);
  timeval wait = {0, 5000};
  select(0, nullptr, &writable, nullptr, &wait);
  closesocket(attempt);
  Sleep(kPause);
  return Now() - start;
}

struct Trace {
  std::vector<std::pair<std::string, double>> steps;  // label and milliseconds
  double total = 0;                                   // milliseconds
};

Trace ReadTrace(const std::wstring& path) {
  Trace trace;
  for (std::string line : e2e::ReadLines(path)) {
    if (line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
    const std::size_t plus = line.rfind('+');
    const std::size_t total = line.rfind("total");
    if (plus == std::string::npos || total == std::string::npos) continue;
    const std::size_t end = line.find_last_not_of(' ', plus - 1);
    trace.steps.emplace_back(line.substr(0, end + 1), std::stod(line.substr(plus + 1)));
    trace.total = std::stod(line.substr(total + 5));
  }
  return trace;
}

// All rounds, one number each, in the order in which they first came.
class Figures {
 public:
  void Add(const std::string& figure, const std::string& subject, double value,
           const std::string& unit = "ns") {
    for (Samples& samples : all_) {
      if (samples.figure == figure && samples.subject == subject) {
        samples.values.push_back(value);
        return;
      }
    }
    all_.push_back({figure, subject, {value}, unit});
  }
  void Write(const std::wstring& path) const {
    for (const Samples& samples : all_) Append(path, samples);
  }

 private:
  std::vector<Samples> all_;
};

// The moments fall on every place within the service's pauses.
void ChooseDelays(const Installation& installation, std::size_t round) {
  installation.machine.Edit([round](standins::MachineState& state) {
    state.keepsMoments = true;
    state.xray.delayMs = 20 + static_cast<std::int64_t>(round * 3 % 10);
    state.tun2socks.delayMs = 90 + static_cast<std::int64_t>(round * 7 % 25);
  });
}

// The last step, which does nothing but run commands.
constexpr char kCommandsStep[] = "ipv6 leak blocked";

double CommandsOf(const Trace& trace) {
  if (trace.steps.empty() || trace.steps.back().first != kCommandsStep) {
    throw std::runtime_error("the trace does not end with the commands");
  }
  return trace.steps.back().second * kNanosecondsPerMillisecond;
}

struct Span {
  std::uint64_t from = 0;  // both as the stand-ins note them
  std::uint64_t to = 0;

  double Length() const { return static_cast<double>(to - from) * 100; }  // nanoseconds
};

void AddSteps(const Trace& trace, double total, Figures& figures) {
  for (const auto& [label, milliseconds] : trace.steps) {
    figures.Add("connect-steps", label, milliseconds, "ms");
  }
  const double around = total / kNanosecondsPerMillisecond - trace.total;
  figures.Add("connect-steps", "around the trace", around, "ms");
}

void AddParts(const Waits& waits, double commands, double total, Figures& figures) {
  const double own =
      total - waits.xray - waits.tun2socks - waits.noticing - waits.network - commands;
  figures.Add("connect-own", "service", own);
  figures.Add("connect-parts", "xray", waits.xray);
  figures.Add("connect-parts", "tun2socks", waits.tun2socks);
  figures.Add("connect-parts", "noticing", waits.noticing);
  figures.Add("connect-parts", "network", waits.network);
  figures.Add("connect-parts", "commands", commands);
  figures.Add("connect-parts", "service", own);
}

void AddLateness(const Lateness& late, Figures& figures) {
  figures.Add("notice-port", "service", late.port);
  figures.Add("notice-port", "period", PeriodOfPortLook());
  figures.Add("notice-adapter", "service", late.adapter);
  figures.Add("notice-adapter", "period", late.adapterPeriod);
  figures.Add("notice-address", "service", late.address);
  figures.Add("notice-address", "period", late.adapterPeriod);
}

void AddRound(const Installation& installation, const Span& span, Figures& figures) {
  const Moments moments(installation.box.machine(), span.from, span.to);
  const Trace trace = ReadTrace(installation.box.trace());
  AddParts(WaitsOf(moments), CommandsOf(trace), span.Length(), figures);
  AddLateness(LatenessOf(moments), figures);
  AddSteps(trace, span.Length(), figures);
}

void ForgetRound(const Installation& installation) {
  installation.machine.ForgetCalls();
  e2e::RemoveFile(installation.box.machine() + L"\\" + standins::kMomentsFile);
  e2e::RemoveFile(installation.box.trace());
}

void MeasureOne(const Installation& installation, std::size_t round, Figures& figures) {
  ChooseDelays(installation, round);
  Span span;
  span.from = standins::MomentNow();
  const std::string reply = Exchange(kServicePipe, R"({"op":"connect"})");
  span.to = standins::MomentNow();
  if (reply != e2e::kUp) throw std::runtime_error("no connect: " + reply);
  // Its first call to the network notes the last one of the connect.
  (void)Exchange(kServicePipe, R"({"op":"disconnect"})");
  AddRound(installation, span, figures);
  ForgetRound(installation);
}

void Measure(const Arguments& arguments) {
  const Installation installation;
  WSADATA data = {};
  WSAStartup(MAKEWORD(2, 2), &data);
  const auto service = installation.StartDaemon();
  Figures warmUp;
  MeasureOne(installation, 0, warmUp);
  Figures figures;
  const std::size_t rounds = arguments.rounds != 0 ? arguments.rounds : arguments.quick ? 9 : 41;
  for (std::size_t round = 0; round < rounds; ++round) MeasureOne(installation, round, figures);
  figures.Write(arguments.out);
  Installation::ShutDown(*service);
}

}  // namespace
}  // namespace bench

int wmain(int argc, wchar_t** argv) {
  return bench::RunBench(argc, argv, bench::Measure);
}
