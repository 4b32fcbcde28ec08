// What the tests of `TunnelManager` share: a machine with the helpers in C:\run, a panel host, a
// node, and foreign routes and adapters that look much like the tunnel's own.
#ifndef TAVRIN_TESTS_UNIT_TUNNEL_TUNNEL_FIXTURE_H_
#define TAVRIN_TESTS_UNIT_TUNNEL_TUNNEL_FIXTURE_H_

#include <memory>
#include <string>

#include "src/tunnel/tunnel_manager.h"
#include "tests/unit/net/net_fixture.h"
#include "tests/unit/status.h"

namespace unit {

// The first and the last so many, or all where there are fewer.
Texts First(const Texts& texts, size_t count);
Texts Last(const Texts& texts, size_t count);

// The texts of the call log's CreateProcessW for one netsh command.
std::string NetshCall(const std::string& arguments);

// At the end of each test the manager is destroyed as at the process's exit, time goes on until
// every adapter of a child has vanished, and then the network has to be exactly what it was.
class TunnelTest : public NetTest {
 protected:
  TunnelTest();

  bool Start() { return Succeeds(manager->start(config), error); }
  // With a helper that needs no time of its own, so that each poll is a single one.
  void MakeHelpersQuick();
  // The adapter of tun2socks outlives its process by so many milliseconds.
  void LetAdapterLinger(std::uint64_t milliseconds);
  // The labels of the trace so far.
  Texts Labels() const;
  std::string LastLabel() const;
  // Lines of the netsh commands that were started, in order.
  Texts NetshLines() const;
  // The calls that change something or start a child, in order.
  Texts Actions() const;
  // Null when there is none.
  netmodel::Adapter* Tun() { return machine.network.FindByAlias("tavrin"); }
  Texts TunRoutes() { return Tun() == nullptr ? Texts() : RoutesOf(Tun()->luid); }
  // The /32 routes over the Ethernet adapter's gateway.
  Texts Pins();
  void ExpectNetworkAsBefore();

  // For a test that takes something foreign away itself.
  void RememberMachine();
  void TearDown() override;

  vpn::TunnelConfig config;
  std::unique_ptr<vpn::TunnelManager> manager = std::make_unique<vpn::TunnelManager>();
  std::wstring error = L"as before";

 private:
  void SeedLookAlikes();

  netmodel::Network before_;
};

// The labels of a start on a machine with nothing left over, and of one that replaces a tunnel.
extern const Texts kFirstStartLabels;
extern const Texts kRestartLabels;

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_TUNNEL_TUNNEL_FIXTURE_H_
