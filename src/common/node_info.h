#ifndef TAVRIN_SRC_COMMON_NODE_INFO_H_
#define TAVRIN_SRC_COMMON_NODE_INFO_H_

#include <cstdint>
#include <string>

namespace vpn {

// One VLESS + REALITY server. Usable only with an address, a uuid and a port other than 0. A record
// starts out with empty texts unless a default stands here.
struct NodeInfo {
  std::wstring name;     // display name, the key that a connect chooses by
  std::wstring address;  // host name or IP address
  std::int32_t port = 0;
  std::wstring uuid;
  std::wstring flow = L"xtls-rprx-vision";  // kept by a source that gives none
  std::wstring sni;
  std::wstring fingerprint = L"chrome";  // kept by a source that gives none
  std::wstring publicKey;
  std::wstring shortId;
};

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_NODE_INFO_H_
