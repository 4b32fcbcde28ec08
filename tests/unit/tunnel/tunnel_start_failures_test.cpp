// Every failure of a start behind its refusals: the text, what is undone, and what remains.
#include <functional>
#include <ostream>

#include "tests/unit/tunnel/tunnel_fixture.h"

namespace unit {
namespace {

constexpr wchar_t kCoreText[] = L"连接核心无法启动，请换一条线路或重新登录后再试。";

struct Failure {
  const char* name;
  std::function<void(sim::Machine&, vpn::TunnelConfig&)> arrange;
  const wchar_t* text;
  const char* lastLabel;
  // What the adapter still carries right after the failure.
  Texts tunRoutes = {};
  Texts tunServers = {};
};

void PrintTo(const Failure& failure, std::ostream* out) {
  *out << failure.name;
}

void FailCall(sim::Machine& machine, const char* name, std::uint64_t nth, std::uint32_t code = 5) {
  machine.faults.Fail(name, {.nth = nth, .code = code});
}

// tun2socks that ends after so long and leaves its adapter behind for a while.
sim::Script DyingTun2socks(std::uint64_t after) {
  sim::AdapterPlan plan = sim::TavrinAdapter();
  plan.vanishesAfter = 20000;
  return sim::Script().BringsAdapter(plan).Exits(1, after);
}

sim::Script Tun2socksWith(const std::function<void(sim::AdapterPlan&)>& change) {
  sim::AdapterPlan plan = sim::TavrinAdapter();
  change(plan);
  return sim::Script().BringsAdapter(plan);
}

const Texts kLowerRoute = {"0.0.0.0/1 via 192.168.123.1 metric 5"};
const Texts kUpperRoute = {"128.0.0.0/1 via 192.168.123.1 metric 5"};
const Texts kOurServer = {"1.1.1.1"};

const Failure kFailures[] = {
    {"XrayCantBeCreated",
     [](auto& machine, auto&) {
       machine.programs.OnNext(L"xray.exe", sim::Script().FailsToStart(193));
     },
     L"CreateProcess failed err=193", "pin panel hosts"},
    {"TheJobRefusesXray",
     [](auto& machine, auto&) { FailCall(machine, "AssignProcessToJobObject", 1); },
     L"AssignProcessToJobObject failed", "pin panel hosts"},
    {"XrayNeverListens",
     [](auto& machine, auto&) { machine.programs.On(L"xray.exe", sim::Idle()); }, kCoreText,
     "spawn xray"},
    {"XrayListensOneMillisecondTooLate",
     [](auto& machine, auto&) {
       machine.programs.On(L"xray.exe", sim::Script().Listens(17593, 4991));
     },
     kCoreText, "spawn xray"},
    {"XrayStaysSuspended", [](auto& machine, auto&) { FailCall(machine, "ResumeThread", 1); },
     kCoreText, "spawn xray"},
    {"XrayExitsForItsConfiguration",
     [](auto& machine, auto&) { machine.programs.On(L"xray.exe", sim::Script().Exits(23, 80)); },
     kCoreText, "spawn xray"},
    {"XrayAcceptsThePortAndExitsInTheSameInstant",
     [](auto& machine, auto&) {
       machine.faults.BeforeEach("WSACleanup", [&machine] {
         for (const auto& process : machine.processes.Started()) {
           machine.processes.Exit(process->id, 0xFFFFFFFF);
         }
       });
     },
     kCoreText, "spawn xray"},
    {"Tun2socksCantBeCreated",
     [](auto& machine, auto&) {
       machine.programs.OnNext(L"tun2socks*.exe", sim::Script().FailsToStart(740));
     },
     L"CreateProcess failed err=740", "xray socks listening"},
    {"TheJobRefusesTun2socks",
     [](auto& machine, auto&) { FailCall(machine, "AssignProcessToJobObject", 2); },
     L"AssignProcessToJobObject failed", "xray socks listening"},
    {"TheAdapterNeverComes",
     [](auto& machine, auto&) { machine.programs.On(L"tun2socks*.exe", sim::Idle()); },
     L"wintun adapter not created", "spawn tun2socks"},
    {"TheAdapterNeverGoesUp",
     [](auto& machine, auto&) {
       machine.programs.On(L"tun2socks*.exe",
                           Tun2socksWith([](auto& plan) { plan.upAfter.reset(); }));
     },
     L"wintun adapter not created", "spawn tun2socks"},
    {"TheAdapterGoesUpOneMillisecondTooLate",
     [](auto& machine, auto&) {
       machine.programs.On(L"tun2socks*.exe",
                           Tun2socksWith([](auto& plan) { plan.upAfter = 14976; }));
     },
     L"wintun adapter not created", "spawn tun2socks"},
    {"TheAdapterIsOfAnotherKind",
     [](auto& machine, auto&) {
       machine.programs.On(L"tun2socks*.exe", Tun2socksWith([](auto& plan) {
                             plan.adapter.description = "WireGuard Tunnel";
                           }));
     },
     L"wintun adapter not created", "spawn tun2socks"},
    {"Tun2socksEndsAtOnce",
     [](auto& machine, auto&) {
       machine.programs.On(L"tun2socks*.exe", sim::Script().Exits(1, 0));
     },
     L"wintun adapter not created", "spawn tun2socks"},
    {"Tun2socksDiesWithItsAdapterUp",
     [](auto& machine, auto&) { machine.programs.On(L"tun2socks*.exe", DyingTun2socks(900)); },
     L"tun2socks exited early", "wintun adapter up"},
    {"Tun2socksCantBeAskedForItsLife",
     [](auto& machine, auto&) {
       machine.faults.Before("GetTickCount", 1,
                             [&machine] { FailCall(machine, "WaitForSingleObject", 1); });
     },
     L"tun2socks exited early", "wintun adapter up"},
    {"TheAddressIsRefused",
     [](auto& machine, auto&) { FailCall(machine, "CreateUnicastIpAddressEntry", 1, 87); },
     L"failed to assign TUN address: CreateUnicastIpAddressEntry failed 87", "wintun adapter up"},
    {"TheAddressIsNone", [](auto&, auto& config) { config.tunAddress = L"192.168.123.300"; },
     L"failed to assign TUN address: invalid IPv4 address 192.168.123.300", "wintun adapter up"},
    {"TheAdapterHasNoGuid",
     [](auto& machine, auto&) { FailCall(machine, "ConvertInterfaceLuidToGuid", 1); },
     L"failed to assign TUN address: guid lookup failed for tavrin", "wintun adapter up"},
    {"TheAdapterIsGoneAgain",
     [](auto& machine, auto&) {
       // Twice for the panel's pin, and then for the address.
       FailCall(machine, "ConvertInterfaceAliasToLuid", 3);
     },
     L"failed to assign TUN address: unknown interface tavrin", "wintun adapter up"},
    {"TheAddressNeverShows",
     [](auto& machine, auto&) { machine.ipHelper.addressDelay = 100000; },
     L"TUN adapter has no IPv4 address",
     "set tun dns (api)",
     {},
     kOurServer},
    {"TheAddressShowsOneMillisecondTooLate",
     [](auto& machine, auto&) { machine.ipHelper.addressDelay = 3976; },
     L"TUN adapter has no IPv4 address",
     "set tun dns (api)",
     {},
     kOurServer},
    {"TheNodesRouteIsRefused",
     [](auto& machine, auto&) { FailCall(machine, "CreateIpForwardEntry2", 2, 1168); },
     L"CreateIpForwardEntry2 failed 1168 for 198.51.100.30",
     "tun ipv4 ready",
     {},
     kOurServer},
    {"TheNodesAddressOnlyLooksLikeOne",
     [](auto&, auto& config) { config.serverAddress = L"999.1.1.1"; },
     L"invalid IPv4 route 999.1.1.1 via 192.168.1.1",
     "tun ipv4 ready",
     {},
     kOurServer},
    {"ThePhysicalInterfaceIsGone",
     [](auto& machine, auto&) { FailCall(machine, "ConvertInterfaceAliasToLuid", 6); },
     L"unknown interface 以太网",
     "tun ipv4 ready",
     {},
     kOurServer},
    {"TheLowerHalfIsRefused",
     [](auto& machine, auto&) { FailCall(machine, "CreateIpForwardEntry2", 3); },
     L"CreateIpForwardEntry2 failed 5 for 0.0.0.0",
     "tun ipv4 ready",
     {},
     kOurServer},
    {"TheUpperHalfIsRefusedAndTheLowerOneStays",
     [](auto& machine, auto&) { FailCall(machine, "CreateIpForwardEntry2", 4); },
     L"CreateIpForwardEntry2 failed 5 for 128.0.0.0", "tun ipv4 ready", kLowerRoute, kOurServer},
    {"TheLowerHalfDoesNotShow",
     [](auto& machine, auto&) {
       machine.ipHelper.swallowsRoute = [](const netmodel::Route& route) {
         return route.destination == 0;
       };
     },
     L"split default routes were not installed on TUN", "tun ipv4 ready", kUpperRoute, kOurServer},
    {"TheUpperHalfDoesNotShow",
     [](auto& machine, auto&) {
       machine.ipHelper.swallowsRoute = [](const netmodel::Route& route) {
         return route.destination == 0x80000000;
       };
     },
     L"split default routes were not installed on TUN", "tun ipv4 ready", kLowerRoute, kOurServer},
    {"TheTableCantBeReadBack",
     [](auto& machine, auto&) { FailCall(machine, "GetIpForwardTable2", 2); },
     L"split default routes were not installed on TUN", "tun ipv4 ready",
     Texts{"0.0.0.0/1 via 192.168.123.1 metric 5", "128.0.0.0/1 via 192.168.123.1 metric 5"},
     kOurServer},
};

class StartFailure : public TunnelTest, public testing::WithParamInterface<Failure> {
 protected:
  StartFailure() { LetAdapterLinger(20000); }
};

TEST_P(StartFailure, HasItsTextUndoesWhatItMayAndLeavesTheRestToTheAdaptersEnd) {
  const Failure& failure = GetParam();
  failure.arrange(machine, config);
  EXPECT_FALSE(Start());
  EXPECT_EQ(error, failure.text);
  EXPECT_EQ(LastLabel(), failure.lastLabel);

  EXPECT_FALSE(manager->childrenAlive());
  EXPECT_EQ(machine.processes.Alive(), Texts());
  EXPECT_EQ(machine.OpenHandles(), Texts());
  EXPECT_EQ(Pins(), Texts()) << "the panel's and the node's routes are gone";

  EXPECT_EQ(TunRoutes(), failure.tunRoutes);
  EXPECT_EQ(Tun() == nullptr ? Texts() : Tun()->dnsServers, failure.tunServers);
  EXPECT_EQ(NetshLines(), Texts()) << "the IPv6 settings were never touched";
  EXPECT_TRUE(Ethernet().ipv6RouterDiscovery);
  EXPECT_EQ(machine.calls.TextsOf("SetInterfaceDnsSettings").size() == 1,
            !failure.tunServers.empty())
      << "the name server is not cleared";

  machine.clock.Advance(20000);
  ExpectNetworkAsBefore();
}

TEST_P(StartFailure, LeavesNothingForTheNextStopAndNothingInTheWayOfTheNextStart) {
  GetParam().arrange(machine, config);
  ASSERT_FALSE(Start());
  machine.calls.Clear();
  manager->stop();
  EXPECT_EQ(machine.calls.Names(), Texts());

  machine.faults.Clear();
  machine.ipHelper = {};
  machine.clock.Advance(20000);
  machine.programs.On(L"xray.exe", sim::TypicalXray());
  machine.programs.On(L"tun2socks*.exe", sim::TypicalTun2socks());
  config.tunAddress = L"192.168.123.1";
  config.serverAddress = L"198.51.100.30";
  error = L"as before";
  EXPECT_TRUE(Start());
  EXPECT_EQ(error, L"as before");
  EXPECT_TRUE(manager->childrenAlive());
  EXPECT_EQ(Last(Labels(), 13), kFirstStartLabels);
}

INSTANTIATE_TEST_SUITE_P(Each, StartFailure, testing::ValuesIn(kFailures),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace unit
