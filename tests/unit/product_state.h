// What the product keeps for the life of its process, and a fixture that starts every test as a new
// process would start.
#ifndef TAVRIN_TESTS_UNIT_PRODUCT_STATE_H_
#define TAVRIN_TESTS_UNIT_PRODUCT_STATE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/netmodel/network_model.h"
#include "tests/sim/fixture.h"

namespace unit {

// What a process finds at its start, taken before the first test changed anything.
struct ValuesAtStart {
  std::wstring runtimeDir;
  int stopRequested;
  int consoleEcho;
  int shutdownAllowed;
  std::uint32_t ownerPid;
};
const ValuesAtStart& AtStart();

// Flags clear, no owner, `g_runtimeDir` at its built-in value, no cached account, no tunnel, no
// service handle. Needs an installed machine: the handles of a tunnel are closed on it.
void ResetProductState();

// Everything of `before` that `now` has lost or changed: routes with their metrics, adapters with
// their addresses, name servers and settings. What was added is not mentioned.
std::vector<std::string> LostOrChanged(const netmodel::Network& before,
                                       const netmodel::Network& now);

// A fresh machine and a fresh product. At the end of the test the tunnel is stopped as the
// process's exit would do it, and then nothing may be open, no child alive, and nothing gone or
// changed that was on the network from the start.
class ProductTest : public sim::MachineTest {
 protected:
  ProductTest();

  // For the end of a SetUp that arranges the machine: what is there now counts as foreign.
  void RememberNetwork();
  void AllowChildren() { mayLeaveChildren_ = true; }
  void AllowNetworkChanges() { mayChangeNetwork_ = true; }

  void TearDown() override;

 private:
  netmodel::Network before_;
  bool mayLeaveChildren_ = false;
  bool mayChangeNetwork_ = false;
};

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_PRODUCT_STATE_H_
