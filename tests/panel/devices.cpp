// The device service, which stands beside the panel and knows the panel's credentials.
#include "tests/panel/endpoints.h"

namespace panel {

Reply ClaimDevice(Call& call) {
  constexpr int kWithoutLimit = 99;
  Json& devices = (*call.user)["devices"];
  const Json& limitOfUser = (*call.user)["device_limit"];
  const int limit = limitOfUser.is_number() ? limitOfUser.get<int>() : kWithoutLimit;
  const std::string id = call.Text("device_id");
  if (id.empty()) return Invalid(call.state, {{"device_id", "缺少设备编号"}});
  bool known = false;
  for (const Json& device : devices) known = known || device == id;
  if (!known && static_cast<int>(devices.size()) >= limit) {
    return Plain(403, {{"message", "设备数量已达上限（" + std::to_string(limit) + " 台）"},
                       {"used", devices.size()},
                       {"limit", limit}});
  }
  if (!known) devices.push_back(id);
  return Plain(200, {{"data", {{"used", devices.size()}, {"limit", limit}}}});
}

}  // namespace panel
