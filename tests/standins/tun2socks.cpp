// Stand-in for tun2socks: makes the tunnel's adapter after a while and keeps it as long as this
// process lives. It sets no address, no route and no name server, as the real one does not.
#include <windows.h>

#include <cstdio>

#include "tests/standins/helper_process.h"
#include "tests/standins/shared_machine.h"
#include "tests/standins/tun2socks_options.h"

namespace standins {
namespace {

constexpr std::int64_t kStartFailed = 1;
constexpr int kUsage = 2;
constexpr std::uint32_t kAutomaticAddress = 0xA9FE0707;  // 169.254.7.7
constexpr std::uint32_t kVirtualInterfaceType = 53;      // IF_TYPE_PROP_VIRTUAL

// Wintun gives the wanted name to the new adapter and renames an older one out of the way.
void MoveOlderAdapterAside(netmodel::Network& network, const std::string& name) {
  netmodel::Adapter* older = network.FindByAlias(name);
  if (older != nullptr) older->friendlyName += " 1";
}

std::uint64_t CreateAdapter(const Tun2socksBehaviour& behaviour, const std::string& name) {
  SharedMachine machine;
  machine.RemovePhantoms();
  MachineState& state = machine.state();
  if (!behaviour.defaultNameFirst) MoveOlderAdapterAside(state.network, name);
  netmodel::Adapter adapter;
  adapter.friendlyName = behaviour.defaultNameFirst ? "Local Area Connection* 9" : name;
  adapter.description = behaviour.description;
  adapter.operStatus = netmodel::kOperStatusDown;
  adapter.ifType = kVirtualInterfaceType;
  adapter.mtu = 65535;
  const std::uint64_t luid = state.network.AddAdapter(adapter).luid;
  OwnAdapter(state, luid, behaviour.adapterOutlives);
  return luid;
}

// A process that dies at this very instant does so within its turn at the machine, so that nobody
// ever sees the adapter up and the process alive.
void BringUp(std::uint64_t luid, const std::string& name, const Tun2socksBehaviour& behaviour) {
  SharedMachine machine;
  netmodel::Network& network = machine.state().network;
  netmodel::Adapter* adapter = network.FindByLuid(luid);
  if (adapter == nullptr) return;
  if (adapter->friendlyName != name) MoveOlderAdapterAside(network, name);
  adapter->friendlyName = name;
  adapter->operStatus = netmodel::kOperStatusUp;
  if (behaviour.automaticAddress) adapter->addresses = {{kAutomaticAddress, 16}};
  machine.Save();
  machine.Note("adapter up", MomentNow());
  if (behaviour.diesAfterMs == 0) End(1);
}

// The library is sought beside the executable; without it no adapter can be made.
void RequireWintun() {
  const std::wstring path = OwnDirectory() + L"\\wintun.dll";
  if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return;
  std::fprintf(stderr, "{\"level\":\"fatal\",\"msg\":\"[ENGINE] failed to start: create tun\"}\n");
  End(kStartFailed);
}

[[noreturn]] void Run(const Tun2socksOptions& options, const Tun2socksBehaviour& behaviour) {
  RequireWintun();
  SleepFor(behaviour.delayMs);
  if (behaviour.exitCode != kNever) End(behaviour.exitCode);
  std::fprintf(stderr, "Creating adapter\n");
  const std::uint64_t luid = CreateAdapter(behaviour, options.device);
  SleepFor(behaviour.comesUp ? behaviour.downMs : kNever);
  BringUp(luid, options.device, behaviour);
  SleepFor(behaviour.diesAfterMs);
  End(1);
}

}  // namespace
}  // namespace standins

int wmain(int argc, wchar_t** argv) {
  if (argc == 2 && std::wstring(argv[1]) == L"--version") {
    std::printf("tun2socks-2.6.0\nwindows/amd64, go1.26\n");
    return 0;
  }
  const standins::MachineState state = standins::LogOwnStart();
  const auto options = standins::ReadTun2socksOptions(argc, argv);
  if (!options || options->device.empty() || options->proxy.empty()) {
    std::fprintf(stderr, "usage: tun2socks --device NAME --proxy URL [flags]\n");
    return standins::kUsage;
  }
  standins::Run(*options, state.tun2socks);
}
