// The account's state and its nodes: first from the subscription, and only if that gives nothing
// from the panel's server list.
#include "src/account/xboard_control_plane.h"
#include "src/common/text.h"
#include "src/panel/account_reply.h"
#include "src/panel/json_reader.h"
#include "src/panel/panel_call.h"
#include "src/panel/subscription.h"

namespace vpn {
namespace {

// What a panel hands out depends on the client that asks; to this one it gives vless:// links.
constexpr wchar_t kSubscriptionAgent[] = L"v2rayN/6.45";

std::int32_t Narrow(std::int64_t value) {
  return static_cast<std::int32_t>(value);
}

std::int32_t DeviceLimit(const std::string& data, const std::string& plan) {
  const std::int32_t own = Narrow(JsonInt(data, "device_limit", 0));
  const std::int32_t ofPlan = Narrow(JsonInt(plan, "device_limit", 0));
  return own <= 0 && ofPlan >= 1 ? ofPlan : own;
}

void ReadPlan(const std::string& data, AccountSession& session) {
  const std::string plan = JsonObject(data, "plan");
  session.planId = Narrow(JsonInt(data, "plan_id", JsonInt(plan, "id", 0)));
  session.hasPlan = session.planId > 0;
  session.deviceLimit = DeviceLimit(data, plan);
  const std::string name = JsonString(plan, "name");
  session.planName = Utf8ToWide(name.empty() ? JsonString(data, "plan_name") : name);
}

void ReadAccount(const std::string& data, const std::wstring& knownEmail, AccountSession& session) {
  session.expiresAt = ParseExpiredAt(data);
  session.email = Utf8ToWide(JsonString(data, "email"));
  if (session.email.empty()) {
    session.email = knownEmail;
  }
  session.expiryDate = DateText(session.expiresAt);
  ReadPlan(data, session);
  session.deviceUsed = 0;
  session.transferEnable = JsonInt(data, "transfer_enable", 0);
  // Unsigned, so that whatever the panel sends has a sum.
  session.transferUsed =
      static_cast<std::int64_t>(static_cast<std::uint64_t>(JsonInt(data, "u", 0)) +
                                static_cast<std::uint64_t>(JsonInt(data, "d", 0)));
  session.expired = session.hasPlan && session.expiresAt >= 1 && session.expiresAt < NowSeconds();
  session.loggedIn = true;
  session.nodes.clear();
}

// With a token the subscription is fetched through the configured panel, whatever address it names.
std::wstring SubscriptionUrl(const std::string& data, const std::wstring& apiBase) {
  const std::string token = JsonString(data, "token");
  if (token.empty()) {
    return Utf8ToWide(JsonString(data, "subscribe_url"));
  }
  return apiBase + L"/api/v1/client/subscribe?token=" + Utf8ToWide(token);
}

// A subscription that fails is not fatal. True when its failure's text went into `error`, which it
// does only if none stood there before.
bool FetchSubscription(const std::wstring& url, std::vector<NodeInfo>& nodes, std::wstring& error) {
  std::string text;
  std::wstring failure;
  if (HttpRequest(L"GET", url, L"", "", L"", text, failure, kSubscriptionAgent, nullptr)) {
    ParseSubscription(text, nodes);
    return false;
  }
  const bool kept = error.empty();
  if (kept) {
    error = failure;
  }
  return kept;
}

}  // namespace

bool XboardControlPlane::fetchAccount(AccountSession& session, std::wstring& error) {
  if (!requireSignIn(error)) {
    return false;
  }
  std::string response;
  if (!GetFromPanel(apiBase + L"/api/v1/user/getSubscribe", authData, response, error)) {
    return false;
  }
  const std::string data = JsonDataObject(response);
  const std::wstring uuid = Utf8ToWide(JsonString(data, "uuid"));
  ReadAccount(data, email, session);
  if (!session.hasPlan || session.expired || uuid.empty()) {
    return true;
  }
  const std::wstring url = SubscriptionUrl(data, apiBase);
  const bool keepError = !url.empty() && FetchSubscription(url, session.nodes, error);
  return !session.nodes.empty() || fetchServers(uuid, keepError, session.nodes, error);
}

bool XboardControlPlane::fetchServers(const std::wstring& uuid, bool keepError,
                                      std::vector<NodeInfo>& nodes, std::wstring& error) {
  std::string response;
  std::wstring failure;
  if (!GetFromPanel(apiBase + L"/api/v1/user/server/fetch", authData, response, failure)) {
    if (!keepError) {
      error = failure.empty() ? L"无法获取订阅节点" : failure;
    }
    return false;
  }
  const std::vector<std::string> servers = JsonObjectArray(response, "data");
  nodes = NodesFromServers(servers, uuid);
  if (nodes.empty()) {
    error = servers.empty() ? L"面板未下发可用节点，请确认节点已显示且套餐权限组一致"
                            : L"面板节点缺少地址，订阅里也没有可解析的 VLESS Reality";
  }
  return !nodes.empty();
}

}  // namespace vpn
