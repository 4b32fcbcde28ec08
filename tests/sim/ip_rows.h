// Between the network model's values and the rows of the IP Helper API.
#ifndef TAVRIN_TESTS_SIM_IP_ROWS_H_
#define TAVRIN_TESTS_SIM_IP_ROWS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/netmodel/network_model.h"
#include "tests/sim/call.h"

#include <win/ip_helper.h>

namespace sim {

void PutAddress(SOCKADDR_INET& target, std::uint32_t address);
// False when it is no IPv4 address.
bool TakeAddress(const SOCKADDR_INET& source, std::uint32_t* address);
std::array<std::uint8_t, 16> GuidBytes(const GUID& guid);
GUID GuidOf(const std::array<std::uint8_t, 16>& bytes);

// The alias of an adapter for the call log, or its LUID when there is none.
std::string AliasOf(const netmodel::Network& network, std::uint64_t luid);

// Hands out a table of these rows, which FreeMibTable takes back.
template <class Table, class Row>
void HandOutTable(const Call& call, const std::vector<Row>& rows, Table** table) {
  // Not a row more, so that the sanitizers see a look behind the last one.
  const size_t size = sizeof(Table) - sizeof(Row) + rows.size() * sizeof(Row);
  const auto memory = std::make_shared<std::vector<std::uint64_t>>((size + 7) / 8);
  Table* const made = reinterpret_cast<Table*>(memory->data());
  made->NumEntries = static_cast<ULONG>(rows.size());
  std::copy(rows.begin(), rows.end(), made->Table);
  call.Track(made, "MIB table", memory);
  *table = made;
}

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_IP_ROWS_H_
