#include "src/control/connect_operation.h"

#include <algorithm>
#include <vector>

#include "src/account/control_plane.h"
#include "src/control/account_cache.h"
#include "src/control/tunnel_instance.h"
#include "src/net/physical_route.h"
#include "src/panel/endpoints.h"
#include "src/runtime/process_state.h"
#include "src/runtime/runtime_files.h"
#include "src/xrayconf/xray_config.h"

namespace vpn {
namespace {

constexpr wchar_t kNoNodes[] = L"没有可用节点";

// Of several nodes with one name the last is taken; null when there is none.
const NodeInfo* FindNode(const std::vector<NodeInfo>& nodes, const std::wstring& name) {
  const auto found = std::find_if(nodes.rbegin(), nodes.rend(),
                                  [&](const NodeInfo& node) { return node.name == name; });
  return found == nodes.rend() ? nullptr : &*found;
}

Status FetchAccount(const std::wstring& runtimeDir, AccountSession& session) {
  const Status fetched = FetchAccountCached(runtimeDir, session);
  return !fetched && fetched.text().empty() ? Status::failure(L"请先在Tavrin登录") : fetched;
}

// A node that the cached list does not hold may be new, so the account is fetched afresh once. A
// node that is still not there quietly becomes the first of the list: a stale choice in the user
// interface shall connect, not fail.
Status ChooseNode(const std::wstring& runtimeDir, const std::wstring& nodeKey, NodeInfo& chosen) {
  AccountSession session;
  if (Status fetched = FetchAccount(runtimeDir, session); !fetched) {
    return fetched;
  }
  if (session.nodes.empty()) {
    InvalidateAccountCache();
    return Status::failure(kNoNodes);
  }
  const NodeInfo* node =
      nodeKey.empty() ? &session.nodes.front() : FindNode(session.nodes, nodeKey);
  if (node == nullptr) {
    InvalidateAccountCache();
    if (Status fetched = FetchAccount(runtimeDir, session); !fetched) {
      return fetched;
    }
    if (session.nodes.empty()) {
      return Status::failure(kNoNodes);
    }
    node = FindNode(session.nodes, nodeKey);
  }
  chosen = node == nullptr ? session.nodes.front() : *node;
  return Status::success();
}

TunnelConfig MakeTunnelConfig(const std::wstring& runtimeDir, const std::wstring& configPath,
                              const NodeInfo& node) {
  TunnelConfig config;
  config.xrayDir = runtimeDir + L'\\' + kXrayDirectory;
  config.tun2socksDir = runtimeDir + L'\\' + kTun2socksDirectory;
  config.configPath = configPath;
  config.serverAddress = node.address;
  config.tunAddress = kDefaultTunAddress;
  config.panelHosts = CollectPanelHosts(runtimeDir);
  return config;
}

Status StartTunnel(const TunnelConfig& config) {
  const MutexLock lock(g_tunnelLock);
  Status started = g_tunnel.start(config);
  if (!started) {
    InvalidateAccountCache();  // the node may be at fault; the next connect asks anew
  }
  return started;
}

}  // namespace

Status ConnectOperation(const std::wstring& nodeKey) {
  const std::wstring runtimeDir = g_runtimeDir;
  const std::wstring configPath = runtimeDir + L'\\' + kXrayConfigFile;
  NodeInfo node;
  PhysicalRoute route;
  return ChooseNode(runtimeDir, nodeKey, node)
      .andThen([&] { return FindPhysicalRoute(route); })
      .andThen([&] { return GenerateXrayConfig(node, route.interfaceAlias, configPath); })
      .andThen([&] { return StartTunnel(MakeTunnelConfig(runtimeDir, configPath, node)); });
}

}  // namespace vpn
