// The account's state and its nodes: first from the subscription, and only if that gives nothing
// from the panel's server list.
#include "src/account/failure_text.h"
#include "src/account/xboard_control_plane.h"
#include "src/common/text.h"
#include "src/panel/account_reply.h"
#include "src/panel/json_reader.h"
#include "src/panel/subscription.h"

namespace vpn {
namespace {

// Panels choose a subscription's format by the user agent; to this one they send vless:// links.
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
  session.email = FirstText({Utf8ToWide(JsonString(data, "email")), knownEmail});
  session.expiryDate = DateText(session.expiresAt);
  ReadPlan(data, session);
  session.deviceUsed = 0;
  session.transferEnable = JsonInt(data, "transfer_enable", 0);
  // Unsigned, since the panel may send any numbers and a signed sum could overflow.
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

// The text of a failure; empty when there was none, or nothing to fetch. A subscription that fails
// is not fatal.
std::wstring FetchSubscription(const std::wstring& url, std::vector<NodeInfo>& nodes) {
  if (url.empty()) {
    return {};
  }
  const PanelReply reply = PanelClient{.base = url, .userAgent = kSubscriptionAgent}.get(L"");
  if (reply.ok()) {
    ParseSubscription(reply.body, nodes);
  }
  return reply.error;
}

}  // namespace

bool XboardControlPlane::fetchAccount(AccountSession& session, std::wstring& error) {
  std::string response;
  if (!Succeeded(fetch(L"/api/v1/user/getSubscribe", response), error)) {
    return false;
  }
  const std::string data = JsonDataObject(response);
  const std::wstring uuid = Utf8ToWide(JsonString(data, "uuid"));
  ReadAccount(data, email_, session);
  if (!session.hasPlan || session.expired || uuid.empty()) {
    return true;
  }
  std::wstring failure = FetchSubscription(SubscriptionUrl(data, panel_.base), session.nodes);
  if (error.empty()) {
    error = failure;
  } else {
    failure.clear();  // a text of the caller's hides it
  }
  return !session.nodes.empty() || Succeeded(fetchServers(uuid, failure, session.nodes), error);
}

Status XboardControlPlane::fetchServers(const std::wstring& uuid,
                                        const std::wstring& subscriptionError,
                                        std::vector<NodeInfo>& nodes) const {
  const PanelReply reply = panel_.get(L"/api/v1/user/server/fetch");
  if (!reply.ok()) {
    return Status::failure(FirstText({subscriptionError, reply.error, L"无法获取订阅节点"}));
  }
  const std::vector<std::string> servers = JsonObjectArray(reply.body, "data");
  nodes = NodesFromServers(servers, uuid);
  if (!nodes.empty()) {
    return Status::success();
  }
  return Status::failure(servers.empty() ? L"面板未下发可用节点，请确认节点已显示且套餐权限组一致"
                                         : L"面板节点缺少地址，订阅里也没有可解析的 VLESS Reality");
}

}  // namespace vpn
