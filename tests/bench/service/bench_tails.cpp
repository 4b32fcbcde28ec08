// The client on a log of 1,000,000 lines and a trace of 100 MB, and a program that reads the last
// 1 MiB of the same files, in turn; process start included in both. A report also asks the helper
// programs for their versions and more, so its floor is that program and a report without the
// files.
#include <stdexcept>

#include "tests/bench/service/daemon.h"
#include "tests/bench/service/exchange.h"
#include "tests/bench/service/record.h"

namespace bench {
namespace {

constexpr std::size_t kTraceSize = 100'000'000;
constexpr std::size_t kLogLines = 1'000'000;

constexpr const char* kLabels[] = {
    "stop() idle",       "kill stale (clean)", "find physical route",
    "pin panel hosts",   "spawn xray",         "xray socks listening",
    "spawn tun2socks",   "wintun adapter up",  "set tun address (api)",
    "set tun dns (api)", "tun ipv4 ready",     "routes installed",
    "ipv6 leak blocked"};

std::string OneTrace() {
  std::string text;
  int total = 0;
  for (const char* label : kLabels) {
    char line[80] = {};
    total += 20;
    std::snprintf(line, sizeof(line), "%-28s +%5dms  total %5dms\r\n", label, 20, total);
    text += line;
  }
  return text;
}

std::string Repeated(const std::string& text, std::size_t times) {
  std::string all;
  all.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

void WriteLongFiles(const e2e::Sandbox& box) {
  const std::string connect = OneTrace();
  e2e::WriteText(box.trace(), "\xEF\xBB\xBF" + Repeated(connect, kTraceSize / connect.size()));
  e2e::WriteText(box.serviceLog(), Repeated("ipc op=status\n", kLogLines));
}

std::wstring Quoted(const std::wstring& path) {
  return L"\"" + path + L"\"";
}

template <class Begin>
double TimeOf(const Begin& begin) {
  const double start = Now();
  if (begin()->WaitForExitCode() != 0) throw std::runtime_error("a program failed");
  return Now() - start;
}

double TimeOfClient(const Installation& installation, const std::wstring& command) {
  const std::wstring program = installation.box.service() + L"\\tavrinctl.exe";
  if (!e2e::Exists(program)) e2e::CopyProgram(L"tavrinctl.exe", program);
  const std::wstring arguments = command + L" --runtime " + Quoted(installation.box.runtime());
  return TimeOf([&] { return installation.StartFile(program, arguments); });
}

double TimeOfReport(const Installation& installation) {
  return TimeOfClient(installation, L"report " + Quoted(installation.box.root() + L"\\report.md"));
}

double TimeOfTail(const Installation& installation, const std::wstring& files) {
  return TimeOf([&] { return installation.Start(L"bench_tail", files); });
}

void Measure(const Arguments& arguments) {
  const Installation installation;
  const Installation bare;  // without a log and a trace
  const auto service = installation.StartDaemon();
  (void)Exchange(kServicePipe, kStatus);
  WriteLongFiles(installation.box);
  const std::wstring trace = Quoted(installation.box.trace());
  const std::wstring both = trace + L" " + Quoted(installation.box.serviceLog());
  Samples traces{"client-trace", "service", {}};
  Samples traceFloor{"client-trace", "tail", {}};
  Samples reports{"client-report", "service", {}};
  Samples reportFloor{"client-report", "tail", {}};
  (void)TimeOfReport(installation);  // all of it is in memory from here on
  (void)TimeOfReport(bare);
  (void)TimeOfTail(installation, both);
  const std::size_t rounds = arguments.rounds != 0 ? arguments.rounds : arguments.quick ? 9 : 21;
  for (std::size_t round = 0; round < rounds; ++round) {
    traces.values.push_back(TimeOfClient(installation, L"trace"));
    traceFloor.values.push_back(TimeOfTail(installation, trace));
    reports.values.push_back(TimeOfReport(installation));
    reportFloor.values.push_back(TimeOfReport(bare) + TimeOfTail(installation, both));
  }
  Installation::ShutDown(*service);
  for (const Samples* samples : {&traces, &traceFloor, &reports, &reportFloor}) {
    Append(arguments.out, *samples);
  }
}

}  // namespace
}  // namespace bench

int wmain(int argc, wchar_t** argv) {
  return bench::RunBench(argc, argv, bench::Measure);
}
