// What a user without a working login does. None of these requests carries a credential; the last
// two end signed in, if at all possible by the ordinary login.
#include "src/account/panel_session.h"
#include "src/account/xboard_control_plane.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"
#include "src/panel/panel_call.h"

namespace vpn {
namespace {

// `"key":"value"` with the value escaped.
std::string Field(const char* key, const std::wstring& value) {
  return std::string("\"") + key + R"(":")" + JsonEscape(WideToUtf8(value)) + '"';
}

std::string OptionalField(const char* key, const std::wstring& value) {
  return value.empty() ? std::string() : "," + Field(key, value);
}

bool FailWithMessage(const std::string& response, const wchar_t* step, DWORD status,
                     std::wstring& error) {
  PreferPanelMessage(response, error);
  error = PanelErrorWithDetail(error, step, status);
  return false;
}

// Explains a refused registration from the panel's answer to it.
std::wstring RegistrationError(const std::string& response, const std::wstring& transportError) {
  const std::wstring message = Utf8ToWide(JsonString(response, "message"));
  if (message.empty()) {
    return transportError.empty() ? L"注册失败" : transportError;
  }
  const bool isKnown = message.find(L"已存在") != std::wstring::npos;
  return isKnown ? L"这个邮箱已经注册过了，请用下面的「去登录」进入" : message;
}

}  // namespace

bool XboardControlPlane::fetchRegisterConfig(RegisterConfig& config, std::wstring& error) {
  config = RegisterConfig();
  std::string response;
  std::wstring firstError;
  if (!GetFromPanel(apiBase + L"/api/v1/guest/comm/config", L"", response, firstError)) {
    std::string second;
    DWORD status = 0;
    if (!GetFromPanel(apiBase + L"/api/v1/passport/comm/config", L"", second, error, &status)) {
      error = PanelErrorWithDetail(error.empty() ? firstError : error, L"CFG", status);
      return false;
    }
    response = second;
  }
  const std::string data = JsonDataObject(response);
  config.emailVerify = JsonBool(data, "is_email_verify");
  config.inviteForce = JsonBool(data, "is_invite_force");
  config.recaptcha = JsonBool(data, "is_recaptcha");
  return true;
}

bool XboardControlPlane::sendEmailCode(const std::wstring& address, std::wstring& error) {
  std::string response;
  DWORD status = 0;
  return PostToPanel(apiBase + L"/api/v1/passport/comm/sendEmailVerify", L"",
                     "{" + Field("email", address) + "}", response, error, &status) ||
         FailWithMessage(response, L"SEND", status, error);
}

bool XboardControlPlane::registerAccount(const std::wstring& address, const std::wstring& password,
                                         const std::wstring& inviteCode,
                                         const std::wstring& emailCode, std::wstring& error) {
  const std::string body = "{" + Field("email", address) + "," + Field("password", password) +
                           OptionalField("invite_code", inviteCode) +
                           OptionalField("email_code", emailCode) + "}";
  std::string response;
  DWORD status = 0;
  if (PostToPanel(apiBase + L"/api/v1/passport/auth/register", L"", body, response, error,
                  &status) &&
      ExtractAuthData(response, authData)) {
    return keepSession(address, error);
  }
  // The panel may have registered the user without handing out a credential, and the user may have
  // been registered before.
  std::wstring loginError;
  if (login(address, password, loginError)) {
    return true;
  }
  error = PanelErrorWithDetail(RegistrationError(response, error), L"REG", status);
  authData.clear();
  return false;
}

bool XboardControlPlane::resetPassword(const std::wstring& address, const std::wstring& emailCode,
                                       const std::wstring& newPassword, std::wstring& error) {
  const std::string body = "{" + Field("email", address) + "," + Field("email_code", emailCode) +
                           "," + Field("password", newPassword) + "}";
  std::string response;
  DWORD status = 0;
  if (!PostToPanel(apiBase + L"/api/v1/passport/auth/forget", L"", body, response, error,
                   &status)) {
    return FailWithMessage(response, L"RESET", status, error);
  }
  std::wstring loginError;
  if (login(address, newPassword, loginError)) {
    return true;
  }
  error = PanelErrorWithDetail(L"密码已重置，请用新密码登录", L"RESET", 0);
  return false;
}

}  // namespace vpn
