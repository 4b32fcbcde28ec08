// The account's nodes as the service would see them.
#ifndef TAVRIN_CLIENT_ACCOUNT_NODE_LOOKUP_H_
#define TAVRIN_CLIENT_ACCOUNT_NODE_LOOKUP_H_

#include <string>
#include <vector>

#include "src/account/control_plane.h"

namespace vpn {

struct FetchedAccount {
  bool isFetched = false;
  AccountSession session;
  std::wstring error;  // the user's text when it could not be fetched
};

// By the backend that the service would choose. May take as long as the panel does.
FetchedAccount FetchAccount(const std::wstring& runtimeDir);

// Of several nodes with one name the last, as the service takes it; null when there is none.
const NodeInfo* NodeByName(const std::vector<NodeInfo>& nodes, const std::wstring& name);

// The name that a mistyped one was probably meant to be; empty when none is near.
std::wstring NearestName(const std::vector<NodeInfo>& nodes, const std::wstring& name);

// "203.0.113.77:443".
std::wstring Endpoint(const std::wstring& address, std::int64_t port);

struct RunningNode {
  std::wstring address;  // empty: there is no configuration, or it can't be read
  std::int64_t port = 0;
};

// Where the generated configuration of the runtime directory leads.
RunningNode ReadRunningNode(const std::wstring& runtimeDir);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_ACCOUNT_NODE_LOOKUP_H_
