// What the stand-ins noted of one connect: when each helper started and was ready, and each call to
// the network.
#ifndef TAVRIN_TESTS_BENCH_SERVICE_MOMENTS_H_
#define TAVRIN_TESTS_BENCH_SERVICE_MOMENTS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

struct Moment {
  double at = 0;  // nanoseconds
  std::string what;
};

// What the stand-ins write down, in these words.
inline constexpr char kStartOfXray[] = "start of xray.exe";
inline constexpr char kStartOfTun2socks[] = "start of tun2socks-windows-amd64.exe";
inline constexpr char kPortOpen[] = "port open";
inline constexpr char kPortNoticed[] = "port noticed";
inline constexpr char kAdapterUp[] = "adapter up";
inline constexpr char kAddressThere[] = "CreateUnicastIpAddressEntry(";
inline constexpr char kLookForAdapter[] =
    "GetAdaptersAddresses(family 0, flags 0, into a buffer) = 0";
inline constexpr char kLookForAddress[] =
    "GetAdaptersAddresses(family 2, flags 16, into a buffer) = 0";

inline constexpr char kNetworkCall[] = "network call of ";  // what follows is 100 nanoseconds each

class Moments {
 public:
  // Of the machine in this directory, from one moment (100 nanoseconds since 1601) to another one,
  // in the order of their time.
  Moments(const std::wstring& machineDirectory, std::uint64_t from, std::uint64_t to);

  // The first that begins with `what`, not before `from`. Throws std::runtime_error when there is
  // none.
  double First(std::string_view what, double from = 0) const;
  // All of them from `from` to `to`.
  std::vector<double> All(std::string_view what, double from, double to) const;
  // The time that was spent in network calls, in nanoseconds, without those that began between the
  // two moments.
  double NetworkTime(double butFrom, double butTo) const;

 private:
  std::vector<Moment> moments_;
};

// What others make the service wait for in a connect, in nanoseconds: the helpers, from the start
// of the process to the moment when it was ready, and the stand-in for the network, other than
// while a helper is waited for.
struct Waits {
  double xray = 0;
  double tun2socks = 0;
  double noticing = 0;  // how late the service was for the two
  double network = 0;
};

Waits WaitsOf(const Moments& moments);

// How late the service noticed what it waited for, in nanoseconds.
struct Lateness {
  double port = 0;
  double adapter = 0;
  double address = 0;
  double adapterPeriod = 0;  // between two looks for the adapter
};

Lateness LatenessOf(const Moments& moments);

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_SERVICE_MOMENTS_H_
