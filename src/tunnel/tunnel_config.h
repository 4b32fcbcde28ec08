// What a start needs to know, and the constants of the sequence.
#ifndef TAVRIN_SRC_TUNNEL_TUNNEL_CONFIG_H_
#define TAVRIN_SRC_TUNNEL_TUNNEL_CONFIG_H_

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "src/common/deployment.h"

namespace vpn {

inline constexpr wchar_t kAdapterName[] = L"tavrin";  // tun2socks' --device and the name sought
inline constexpr wchar_t kDefaultTunAddress[] = L"192.168.123.1";
inline constexpr std::uint8_t kTunPrefixLength = 24;
inline constexpr wchar_t kTunNameServer[] = L"1.1.1.1";
inline constexpr std::uint8_t kHostRoutePrefix = 32;
inline constexpr ULONG kHostRouteMetric = 1;
inline constexpr std::uint8_t kSplitRoutePrefix = 1;
inline constexpr ULONG kSplitRouteMetric = 5;
inline constexpr wchar_t kLowerHalf[] = L"0.0.0.0";  // the two split routes' destinations
inline constexpr wchar_t kUpperHalf[] = L"128.0.0.0";

struct TunnelConfig {
  std::wstring xrayDir;       // holds "xray.exe"; the Xray child's working directory
  std::wstring tun2socksDir;  // holds "tun2socks*.exe" and "wintun.dll"; that child's directory
  std::wstring configPath;    // the generated Xray configuration
  std::wstring serverAddress = kDefaultNodeAddress;  // the node: IPv4 literal, host name or empty
  std::wstring tunAddress;               // IPv4 of the TUN adapter; empty means the default
  std::vector<std::wstring> panelHosts;  // host names or IPv4 literals
};

inline std::wstring TunAddressOf(const TunnelConfig& config) {
  return config.tunAddress.empty() ? kDefaultTunAddress : config.tunAddress;
}

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_TUNNEL_CONFIG_H_
