// What a deployment chooses. Everything here uses names and addresses that are reserved for
// documentation; a build for real users sets its own.
#ifndef TAVRIN_SRC_COMMON_DEPLOYMENT_H_
#define TAVRIN_SRC_COMMON_DEPLOYMENT_H_

#include <cstdint>

namespace vpn {

// TCP and UDP port of Xray's SOCKS inbound on 127.0.0.1: written into its configuration, waited for
// by the start, and handed to tun2socks.
inline constexpr std::uint16_t kSocksPort = 17593;

// Node address that is pinned when the chosen node has none, or has a host name.
inline constexpr wchar_t kDefaultNodeAddress[] = L"203.0.113.10";

// The panel's registered domain: resolved by the domestic name server and never tunnelled.
inline constexpr char kPanelDomain[] = "panel.example";

// Services that stay on the proxy even where a rule for mainland China would match them: the
// search engine, the model maker's corporate domain, its assistant's two domains, and the code
// editor's two domains and API.
inline constexpr const char* kProxyDomains[] = {
    "search.example",     "maker.example",     "assistant-ai.example",  "assistant-com.example",
    "editor-com.example", "editor-sh.example", "api.editor-com.example"};

// The panel's own API host, where payment channels send their notifications: named to the panel's
// operator when no payment method is set up.
inline constexpr wchar_t kPaymentNotifyUrl[] = L"https://api.panel.example";

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_DEPLOYMENT_H_
