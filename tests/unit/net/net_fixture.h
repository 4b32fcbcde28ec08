// What the tests of src/net/ share: the Ethernet adapter of the typical machine, one of a tunnel
// beside it, and a look at the network in readable form.
#ifndef TAVRIN_TESTS_UNIT_NET_NET_FIXTURE_H_
#define TAVRIN_TESTS_UNIT_NET_NET_FIXTURE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "tests/netmodel/network_model.h"
#include "tests/unit/product_state.h"

namespace unit {

using Texts = std::vector<std::string>;
using WideTexts = std::vector<std::wstring>;

inline constexpr wchar_t kEthernet[] = L"以太网";
inline constexpr std::uint32_t kGateway = 0xC0A80101;  // 192.168.1.1

class NetTest : public ProductTest {
 protected:
  netmodel::Adapter& Ethernet() { return *machine.network.FindByAlias("以太网"); }

  netmodel::Adapter& AddAdapter(const std::string& name, const std::string& description = "") {
    netmodel::Adapter adapter;
    adapter.friendlyName = name;
    adapter.description = description;
    return machine.network.AddAdapter(adapter);
  }

  // `10.0.0.0/8 via 10.1.1.1 metric 5`, in table order, of one interface.
  Texts RoutesOf(std::uint64_t luid) const {
    Texts texts;
    for (const netmodel::Route& route : machine.network.routes) {
      if (route.luid == luid) {
        texts.push_back(netmodel::FormatIpv4(route.destination) + '/' +
                        std::to_string(route.prefixLength) + " via " +
                        netmodel::FormatIpv4(route.nextHop) + " metric " +
                        std::to_string(route.metric));
      }
    }
    return texts;
  }
};

// What the typical machine routes over its Ethernet adapter.
inline const Texts kEthernetRoutes = {"0.0.0.0/0 via 192.168.1.1 metric 25",
                                      "192.168.1.0/24 via 0.0.0.0 metric 281",
                                      "192.168.1.20/32 via 0.0.0.0 metric 281"};

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_NET_NET_FIXTURE_H_
