#include "tests/bench/service/moments.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "tests/bench/service/record.h"
#include "tests/e2e/harness/sandbox.h"
#include "tests/standins/shared_machine.h"

namespace bench {
namespace {

constexpr double kNanosecondsPerTick = 100;
constexpr double kForEver = std::numeric_limits<double>::max();

}  // namespace

Moments::Moments(const std::wstring& machineDirectory, std::uint64_t from, std::uint64_t to) {
  for (const std::string& line :
       e2e::ReadLines(machineDirectory + L"\\" + standins::kMomentsFile)) {
    const std::size_t blank = line.find(' ');
    const std::uint64_t ticks = std::stoull(line.substr(0, blank));
    if (ticks < from || ticks > to) continue;
    moments_.push_back({static_cast<double>(ticks) * kNanosecondsPerTick, line.substr(blank + 1)});
  }
  std::stable_sort(moments_.begin(), moments_.end(),
                   [](const Moment& left, const Moment& right) { return left.at < right.at; });
}

double Moments::First(std::string_view what, double from) const {
  const std::vector<double> all = All(what, from, kForEver);
  if (all.empty()) throw std::runtime_error("never noted: " + std::string(what));
  return all.front();
}

std::vector<double> Moments::All(std::string_view what, double from, double to) const {
  std::vector<double> all;
  for (const Moment& moment : moments_) {
    if (moment.what.starts_with(what) && moment.at >= from && moment.at <= to) {
      all.push_back(moment.at);
    }
  }
  return all;
}

double Moments::NetworkTime(double butFrom, double butTo) const {
  double time = 0;
  for (const Moment& moment : moments_) {
    const bool isLeftOut = moment.at >= butFrom && moment.at <= butTo;
    if (moment.what.starts_with(kNetworkCall) && !isLeftOut) {
      time += std::stod(moment.what.substr(sizeof(kNetworkCall) - 1)) * kNanosecondsPerTick;
    }
  }
  return time;
}

Waits WaitsOf(const Moments& moments) {
  Waits waits;
  waits.xray = moments.First(kPortOpen) - moments.First(kStartOfXray);
  waits.tun2socks = moments.First(kAdapterUp) - moments.First(kStartOfTun2socks);
  const Lateness late = LatenessOf(moments);
  waits.noticing = late.port + late.adapter;
  const double seen = moments.First(kAdapterUp) + late.adapter;
  waits.network = moments.NetworkTime(moments.First(kStartOfTun2socks), seen);
  return waits;
}

Lateness LatenessOf(const Moments& moments) {
  const double up = moments.First(kAdapterUp);
  const double seen = moments.First(kLookForAdapter, up);
  const double address = moments.First(kAddressThere);
  const std::vector<double> looks =
      moments.All(kLookForAdapter, moments.First(kStartOfTun2socks), seen);
  if (looks.size() < 2) throw std::runtime_error("the adapter was there at the first look");
  std::vector<double> gaps;
  for (std::size_t i = 1; i < looks.size(); ++i) gaps.push_back(looks[i] - looks[i - 1]);
  return {moments.First(kPortNoticed) - moments.First(kPortOpen), seen - up,
          moments.First(kLookForAddress, address) - address, Quantile(gaps, 0.5)};
}

}  // namespace bench
