#include "src/account/failure_text.h"
#include "src/account/xboard_control_plane.h"
#include "src/panel/json_reader.h"
#include "src/panel/request_text.h"

namespace vpn {
namespace {

// Inside the data object, else anywhere.
std::int32_t ReadCount(const std::string& response, std::string_view key) {
  return static_cast<std::int32_t>(
      JsonInt(JsonDataObject(response), key, JsonInt(response, key, 0)));
}

}  // namespace

bool XboardControlPlane::claimDevice(const std::wstring& deviceId, std::int32_t& used,
                                     std::int32_t& limit, std::wstring& error) {
  used = 0;
  limit = 0;
  if (deviceApi_.empty()) {
    return true;  // no device service: everything is allowed
  }
  if (!Succeeded(requireSignIn(), error)) {
    return false;
  }
  if (deviceId.empty() || deviceId == L"unknown-device") {
    error = L"无法识别这台电脑";
    return false;
  }
  const PanelClient devices = {deviceApi_, panel_.credential};
  const PanelReply reply = devices.post(L"/claim", JsonBody().addText("device_id", deviceId).str());
  if (!reply.ok()) {
    error = FirstText({MessageIn(reply.body), reply.error, L"设备登记失败"});
    return false;
  }
  used = ReadCount(reply.body, "used");
  limit = ReadCount(reply.body, "limit");
  return true;
}

}  // namespace vpn
