// The IP Helper and Winsock interfaces with what their headers need around them, and the owners of
// what they hand out.
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

// SetInterfaceDnsSettings for tool chains whose netioapi.h is older than Windows 10 2004, which
// brought it. Names, layout and values are the platform's.
#ifndef DNS_INTERFACE_SETTINGS_VERSION1
#define DNS_INTERFACE_SETTINGS_VERSION1 0x0001
#define DNS_SETTING_NAMESERVER 0x0002

struct DNS_INTERFACE_SETTINGS {
  ULONG Version;
  ULONG64 Flags;
  PWSTR Domain;
  PWSTR NameServer;
  PWSTR SearchList;
  ULONG RegistrationEnabled;
  ULONG RegisterAdapterName;
  ULONG EnableLLMNR;
  ULONG QueryAdapterName;
  PWSTR ProfileNameServer;
};

extern "C" __declspec(dllimport) DWORD WINAPI
    SetInterfaceDnsSettings(GUID Interface, const DNS_INTERFACE_SETTINGS* Settings);
#endif  // DNS_INTERFACE_SETTINGS_VERSION1

namespace vpn {

inline constexpr ULONG kForever = 0xFFFFFFFF;  // lifetime in seconds; nldef.h: infinite

// Holds Winsock open for a scope.
class WinsockScope {
 public:
  WinsockScope() {
    WSADATA data = {};
    open_ = WSAStartup(MAKEWORD(2, 2), &data) == 0;
  }
  WinsockScope(const WinsockScope&) = delete;
  WinsockScope& operator=(const WinsockScope&) = delete;
  ~WinsockScope() {
    if (open_) {
      (void)WSACleanup();
    }
  }

  bool isOpen() const { return open_; }

 private:
  bool open_ = false;
};

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
