#include "client/account/node_lookup.h"

#include <algorithm>

#include "src/common/files.h"
#include "src/common/text.h"
#include "src/account/control_plane_choice.h"
#include "src/panel/json_reader.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

// How many units must be changed, put in or left out to make one text the other.
size_t EditDistance(const std::wstring& left, const std::wstring& right) {
  std::vector<size_t> row(right.size() + 1);
  for (size_t at = 0; at <= right.size(); ++at) {
    row[at] = at;
  }
  for (size_t line = 1; line <= left.size(); ++line) {
    size_t diagonal = row[0];
    row[0] = line;
    for (size_t at = 1; at <= right.size(); ++at) {
      const size_t above = row[at];
      const size_t changed = diagonal + (left[line - 1] == right[at - 1] ? 0 : 1);
      row[at] = std::min({above + 1, row[at - 1] + 1, changed});
      diagonal = above;
    }
  }
  return row.back();
}

}  // namespace

FetchedAccount FetchAccount(const std::wstring& runtimeDir) {
  FetchedAccount account;
  account.isFetched = CreateControlPlane(runtimeDir)->fetchAccount(account.session, account.error);
  return account;
}

const NodeInfo* NodeByName(const std::vector<NodeInfo>& nodes, const std::wstring& name) {
  const auto found = std::find_if(nodes.rbegin(), nodes.rend(),
                                  [&name](const NodeInfo& node) { return node.name == name; });
  return found == nodes.rend() ? nullptr : &*found;
}

std::wstring NearestName(const std::vector<NodeInfo>& nodes, const std::wstring& name) {
  const std::wstring wanted = ToLowerText(name);
  std::wstring nearest;
  size_t least = std::max<size_t>(2, name.size() / 3) + 1;
  for (const NodeInfo& node : nodes) {
    const std::wstring known = ToLowerText(node.name);
    // Somebody who typed the beginning alone is helped too.
    const size_t distance = std::min(EditDistance(known, wanted),
                                     EditDistance(known.substr(0, wanted.size()), wanted) + 1);
    if (distance < least) {
      least = distance;
      nearest = node.name;
    }
  }
  return nearest;
}

std::wstring Endpoint(const std::wstring& address, std::int64_t port) {
  const bool isIpv6 = address.find(L':') != std::wstring::npos;
  return (isIpv6 ? L"[" + address + L"]" : address) + L":" + std::to_wstring(port);
}

RunningNode ReadRunningNode(const std::wstring& runtimeDir) {
  RunningNode node;
  std::string text;
  if (!ReadFileBytes(runtimeDir + L"\\" + kXrayConfigFile, text)) {
    return node;
  }
  const std::vector<std::string> servers = JsonObjectArray(text, "vnext");
  if (!servers.empty()) {
    node.address = Utf8ToWide(JsonString(servers.front(), "address"));
    node.port = JsonInt(servers.front(), "port", 0);
  }
  return node;
}

}  // namespace vpn
