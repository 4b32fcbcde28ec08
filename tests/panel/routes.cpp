#include <array>
#include <chrono>
#include <random>
#include <string_view>

#include "tests/panel/endpoints.h"

namespace panel {
namespace {

struct PathEntry {
  std::string_view method;
  std::string_view path;
  bool needsUser;
  Reply (*endpoint)(Call&);
};

constexpr PathEntry kPaths[] = {
    {"GET", "/api/v1/guest/comm/config", false, GuestConfig},
    {"POST", "/api/v1/passport/auth/login", false, Login},
    {"POST", "/api/v1/passport/auth/register", false, Register},
    {"POST", "/api/v1/passport/auth/forget", false, Forget},
    {"POST", "/api/v1/passport/comm/sendEmailVerify", false, SendEmailVerify},
    {"GET", "/api/v1/client/subscribe", false, ClientSubscribe},
    {"GET", "/api/v1/user/getSubscribe", true, GetSubscribe},
    {"GET", "/api/v1/user/info", true, UserInfo},
    {"GET", "/api/v1/user/server/fetch", true, ServerFetch},
    {"GET", "/api/v1/user/plan/fetch", true, PlanFetch},
    {"GET", "/api/v1/user/order/fetch", true, OrderFetch},
    {"POST", "/api/v1/user/order/save", true, OrderSave},
    {"POST", "/api/v1/user/order/cancel", true, OrderCancel},
    {"POST", "/api/v1/user/order/checkout", true, OrderCheckout},
    {"GET", "/api/v1/user/order/check", true, OrderCheck},
    {"GET", "/api/v1/user/order/getPaymentMethod", true, PaymentMethods},
    {"GET", "/api/v1/user/invite/fetch", true, InviteFetch},
    {"GET", "/api/v1/user/invite/save", true, InviteSave},
    {"GET", "/api/v1/user/tvn_invite/referrals", true, Referrals},
    {"POST", "/device/claim", true, ClaimDevice},
};

// The panel reads one header only, and a body that is no JSON as if there were none.
Json InputOf(const httplib::Request& request) {
  const Json body = Json::parse(request.body, nullptr, false);
  return body.is_object() ? body : Json::object();
}

Json* UserOf(Json& state, const std::string& credential) {
  for (Json& user : state["users"]) {
    for (const Json& session : user["sessions"]) {
      if (session == credential) return &user;
    }
  }
  return nullptr;
}

std::string Fresh(Json& state, std::size_t length, std::string_view letters) {
  state["drawn"] = state["drawn"].get<unsigned>() + 1;
  std::mt19937 draw(state["drawn"].get<unsigned>());
  std::string text;
  while (text.size() < length) text += letters[draw() % letters.size()];
  return text;
}

}  // namespace

std::string Call::Text(const char* key) const {
  const auto found = input.find(key);
  if (found == input.end()) return request.get_param_value(key);
  return found->is_string() ? found->get<std::string>() : found->dump();
}

std::int64_t Call::Number(const char* key) const {
  return std::strtoll(Text(key).c_str(), nullptr, 10);
}

Reply Route(Json& state, const httplib::Request& request) {
  for (const PathEntry& entry : kPaths) {
    if (entry.path != request.path || entry.method != request.method) continue;
    Call call{state, request, InputOf(request)};
    call.user = UserOf(state, request.get_header_value("Authorization"));
    if (entry.needsUser && call.user == nullptr) return SignedOut(state);
    return entry.endpoint(call);
  }
  return Thrown(404, "The route " + request.path.substr(1) + " could not be found.");
}

Json* FindBy(Json& rows, const char* key, const Json& value) {
  for (Json& row : rows) {
    if (row[key] == value) return &row;
  }
  return nullptr;
}

std::int64_t Now() {
  return std::chrono::duration_cast<std::chrono::seconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

std::string FreshText(Json& state, std::size_t length) {
  return Fresh(state, length, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789");
}

std::string FreshDigits(Json& state, std::size_t length) {
  return Fresh(state, length, "123456789");
}

}  // namespace panel
