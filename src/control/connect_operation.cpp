#include "src/control/connect_operation.h"

#include <vector>

#include "src/account/control_plane.h"
#include "src/control/session_cache.h"
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
  const NodeInfo* found = nullptr;
  for (const NodeInfo& node : nodes) {
    if (node.name == name) {
      found = &node;
    }
  }
  return found;
}

// Empty when `session` holds the account, else the text for the user.
std::wstring FetchAccountText(const std::wstring& runtimeDir, AccountSession& session) {
  std::wstring error;
  if (FetchAccountCached(runtimeDir, session, error)) {
    return {};
  }
  return error.empty() ? L"请先在Tavrin登录" : error;
}

// A node that the cached list does not hold may be new, so the account is fetched afresh once. A
// node that is still not there quietly becomes the first of the list: a stale choice in the user
// interface shall connect, not fail.
std::wstring ChooseNode(const std::wstring& runtimeDir, const std::wstring& nodeKey,
                        NodeInfo& chosen) {
  AccountSession session;
  std::wstring error = FetchAccountText(runtimeDir, session);
  if (!error.empty()) {
    return error;
  }
  if (session.nodes.empty()) {
    InvalidateSessionCache();
    return kNoNodes;
  }
  const NodeInfo* node =
      nodeKey.empty() ? &session.nodes.front() : FindNode(session.nodes, nodeKey);
  if (node == nullptr) {
    InvalidateSessionCache();
    error = FetchAccountText(runtimeDir, session);
    if (!error.empty()) {
      return error;
    }
    if (session.nodes.empty()) {
      return kNoNodes;
    }
    node = FindNode(session.nodes, nodeKey);
  }
  chosen = node == nullptr ? session.nodes.front() : *node;
  return {};
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

std::wstring StartTunnel(const TunnelConfig& config) {
  std::wstring error;
  const MutexLock lock(TunnelLock);
  if (Tunnel.start(config, error)) {
    return {};
  }
  InvalidateSessionCache();  // the node may be at fault; the next connect asks anew
  return error;
}

}  // namespace

std::wstring ConnectOperation(const std::wstring& nodeKey) {
  const std::wstring runtimeDir = RuntimeDir;
  NodeInfo node;
  std::wstring error = ChooseNode(runtimeDir, nodeKey, node);
  if (!error.empty()) {
    return error;
  }
  PhysicalRoute route;
  if (!FindPhysicalRoute(route, error)) {
    return error;
  }
  const std::wstring configPath = runtimeDir + L'\\' + kXrayConfigFile;
  if (!GenerateXrayConfig(node, route.interfaceAlias, configPath, error)) {
    return error;
  }
  return StartTunnel(MakeTunnelConfig(runtimeDir, configPath, node));
}

}  // namespace vpn
