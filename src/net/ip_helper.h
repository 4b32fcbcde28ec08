// The IP Helper interface with what its headers need around it, and the owner of its tables.
// WIN32_LEAN_AND_MEAN keeps <windows.h> from bringing the old winsock.h, so the order is free.
#ifndef TAVRIN_SRC_NET_IP_HELPER_H_
#define TAVRIN_SRC_NET_IP_HELPER_H_

#include <winsock2.h>
#include <ws2tcpip.h>
#include <iphlpapi.h>
#include <netioapi.h>

#include <array>
#include <optional>
#include <string>

#include "src/common/unique_handle.h"

namespace vpn {

inline constexpr ULONG kForever = 0xFFFFFFFF;  // lifetime in seconds; nldef.h: infinite

// For any table that a Get…Table call hands out.
template <class Table>
struct MibTableTraits : NullIsEmpty<Table*> {
  static void close(Table* value) { FreeMibTable(value); }
};
template <class Table>
using UniqueMibTable = UniqueHandle<MibTableTraits<Table>>;

// Nothing unless the text is a dotted IPv4 address by the platform's own reading.
inline std::optional<IN_ADDR> ParseIpv4(const std::wstring& text) {
  IN_ADDR address = {};
  return InetPtonW(AF_INET, text.c_str(), &address) == 1 ? std::optional(address) : std::nullopt;
}

// Dotted text, empty when the platform refuses.
inline std::wstring FormatIpv4(const IN_ADDR& address) {
  std::array<wchar_t, 22> text{};
  return InetNtopW(AF_INET, &address, text.data(), text.size()) == nullptr ? L"" : text.data();
}

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_IP_HELPER_H_
