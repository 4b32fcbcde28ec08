// One IP Helper call on the shared machine: taken in turn, failed when the test asked for that,
// carried out on the network, and written to the log as one line "Name(arguments) = code".
#ifndef TAVRIN_TESTS_STANDINS_IPHLPAPI_CALL_H_
#define TAVRIN_TESTS_STANDINS_IPHLPAPI_CALL_H_

#include <winsock2.h>
#include <ws2tcpip.h>
#include <iphlpapi.h>
#include <netioapi.h>

#include <cstdint>
#include <functional>
#include <string>

#include "tests/netmodel/network_model.h"

namespace standins {

// The first names the arguments before anything happens; the second acts and gives the code.
using Describe = std::function<std::string(const netmodel::Network&)>;
using Act = std::function<std::uint32_t(netmodel::Network&)>;

// No exception leaves: a machine that cannot be reached answers ERROR_GEN_FAILURE.
std::uint32_t Answer(const char* call, const Describe& describe, const Act& act);
// For the calls without a result, which cannot fail.
void Note(const char* call, const std::string& arguments);

// An interface in the log: its alias, or the number when there is no such interface.
std::string NameOf(const netmodel::Network& network, std::uint64_t luid);

// Host byte order from and to the socket address of the platform. 0 for another family.
std::uint32_t Ipv4Of(const SOCKADDR_INET& address);
SOCKADDR_INET SocketAddressOf(std::uint32_t address);

}  // namespace standins

#endif  // TAVRIN_TESTS_STANDINS_IPHLPAPI_CALL_H_
