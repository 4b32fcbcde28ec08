#include "src/account/xboard_control_plane.h"

#include <windows.h>

#include <utility>

#include "src/account/panel_session.h"
#include "src/common/files.h"
#include "src/common/text.h"
#include "src/panel/endpoints.h"
#include "src/panel/json_reader.h"
#include "src/panel/panel_call.h"

namespace vpn {
XboardControlPlane::XboardControlPlane(std::wstring api, std::wstring session, std::wstring device,
                                       std::wstring invite)
    : apiBase(TrimEndSlashes(std::move(api))),
      sessionPath(std::move(session)),
      deviceApi(TrimEndSlashes(std::move(device))),
      inviteBase(TrimEndSlashes(std::move(invite))) {
  loadSession();
}

void XboardControlPlane::loadSession() {
  std::string content;
  if (ReadFileBytes(sessionPath, content)) {
    authData = Utf8ToWide(JsonString(content, "auth_data"));
    email = Utf8ToWide(JsonString(content, "email"));
  }
}

// Some panels read a JSON body and some only a form. Whatever went wrong with the first, the second
// is tried, and only its outcome is told; a wrong password thus counts twice on the panel.
bool XboardControlPlane::login(const std::wstring& address, const std::wstring& password,
                               std::wstring& error) {
  const std::wstring url = apiBase + L"/api/v1/passport/auth/login";
  const std::string user = WideToUtf8(address);
  const std::string secret = WideToUtf8(password);
  const std::string json =
      R"({"email":")" + JsonEscape(user) + R"(","password":")" + JsonEscape(secret) + R"("})";
  const std::string form = "email=" + UrlEncode(user) + "&password=" + UrlEncode(secret);
  std::string response;
  if (PostToPanel(url, L"", json, response, error) && ExtractAuthData(response, authData)) {
    return keepSession(address, error);
  }
  error.clear();
  DWORD status = 0;
  if (HttpRequest(L"POST", url, L"", form, L"application/x-www-form-urlencoded", response, error,
                  kUserAgent, &status) &&
      ExtractAuthData(response, authData)) {
    return keepSession(address, error);
  }
  PreferPanelMessage(response, error);
  if (error.empty()) {
    error = L"登录失败，请检查邮箱密码或面板地址";
  }
  error = PanelErrorWithDetail(error, L"LOGIN", status);
  authData.clear();
  return false;
}

bool XboardControlPlane::keepSession(const std::wstring& address, std::wstring& error) {
  email = address;
  return SaveSession(sessionPath, email, authData, error);
}

bool XboardControlPlane::requireSignIn(std::wstring& error) const {
  if (authData.empty()) {
    error = L"请先登录";
  }
  return !authData.empty();
}

bool XboardControlPlane::logout() {
  authData.clear();
  email.clear();
  return DeleteFileW(sessionPath.c_str()) != FALSE;
}

}  // namespace vpn
