// The panel's addresses: `panel.json` in the runtime directory, and the environment. Read anew at
// each call, so a change takes effect with the next connect.
#ifndef TAVRIN_SRC_PANEL_ENDPOINTS_H_
#define TAVRIN_SRC_PANEL_ENDPOINTS_H_

#include <string>
#include <vector>

namespace vpn {

// The texts of `panel.json`, each empty when its key is not there. Only `apiBase` decides that
// there is a panel.
struct PanelEndpoints {
  std::wstring apiBase;       // base address of the panel's HTTP API, with scheme
  std::wstring deviceApi;     // base address of the device service
  std::wstring inviteBase;    // base address of invite links
  std::wstring updateUrl;     // only its host matters
  std::wstring downloadHost;  // an address or host; only its host matters
};

// As the file has them; all empty when it can't be opened.
PanelEndpoints ReadPanelEndpoints(const std::wstring& runtimeDir);

// The value of TAVRIN_XBOARD_URL; empty when unset, or when it does not fit in 512 units.
std::wstring PanelUrlFromEnvironment();

// Hosts that must stay reachable past the tunnel: sorted by code units, without duplicates.
std::vector<std::wstring> CollectPanelHosts(const std::wstring& runtimeDir);

// Removes every "/" and "\" from the end.
std::wstring TrimEndSlashes(std::wstring text);

// The bare host of an address: no scheme, user, port, path or query; what stands in the brackets of
// an IPv6 host. Empty when there is none.
std::wstring UrlHost(const std::wstring& url);

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_ENDPOINTS_H_
