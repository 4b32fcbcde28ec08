#include "src/account/panel_session.h"
#include "src/account/xboard_control_plane.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"
#include "src/panel/panel_call.h"

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
  if (deviceApi.empty()) {
    return true;  // no device service: everything is allowed
  }
  if (!requireSignIn(error)) {
    return false;
  }
  if (deviceId.empty() || deviceId == L"unknown-device") {
    error = L"无法识别这台电脑";
    return false;
  }
  std::string response;
  if (!PostToPanel(deviceApi + L"/claim", authData,
                   R"({"device_id":")" + JsonEscape(WideToUtf8(deviceId)) + R"("})", response,
                   error)) {
    PreferPanelMessage(response, error);
    if (error.empty()) {
      error = L"设备登记失败";  // GCOVR_EXCL_LINE: so far every failed request has a text
    }
    return false;
  }
  used = ReadCount(response, "used");
  limit = ReadCount(response, "limit");
  return true;
}

}  // namespace vpn
