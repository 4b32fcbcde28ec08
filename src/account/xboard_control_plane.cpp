#include "src/account/xboard_control_plane.h"

#include <windows.h>

#include <utility>

#include "src/account/credential.h"
#include "src/account/failure_text.h"
#include "src/common/files.h"
#include "src/common/text.h"
#include "src/panel/endpoints.h"
#include "src/panel/json_reader.h"
#include "src/panel/request_text.h"

namespace vpn {

XboardControlPlane::XboardControlPlane(std::wstring apiBase, std::wstring credentialPath,
                                       std::wstring deviceApi, std::wstring inviteBase)
    : panel_{TrimEndSlashes(std::move(apiBase))},
      credentialPath_(std::move(credentialPath)),
      deviceApi_(TrimEndSlashes(std::move(deviceApi))),
      inviteBase_(TrimEndSlashes(std::move(inviteBase))) {
  std::string stored;
  if (ReadFileBytes(credentialPath_, stored)) {
    panel_.credential = Utf8ToWide(JsonString(stored, "auth_data"));
    email_ = Utf8ToWide(JsonString(stored, "email"));
  }
}

// Some panels read a JSON body and some only a form. Whatever went wrong with the first, the second
// is tried, and only its outcome is told; a wrong password thus counts twice on the panel.
bool XboardControlPlane::login(const std::wstring& email, const std::wstring& password,
                               std::wstring& error) {
  const std::wstring path = L"/api/v1/passport/auth/login";
  const PanelClient guest = panel_.signedOut();
  const PanelReply first =
      guest.post(path, JsonBody().addText("email", email).addText("password", password).str());
  std::wstring authData = ExtractAuthData(first);
  if (!authData.empty()) {
    return Succeeded(signIn(email, authData), error);
  }
  error.clear();
  const std::string form =
      "email=" + UrlEncode(WideToUtf8(email)) + "&password=" + UrlEncode(WideToUtf8(password));
  const PanelReply second = guest.post(path, form, kFormType);
  authData = ExtractAuthData(second);
  if (!authData.empty()) {
    return Succeeded(signIn(email, authData), error);
  }
  // Where no second answer came, the first one's message still tells more than the transport.
  const std::wstring message = MessageIn(second.answered ? second.body : first.body);
  error = PanelErrorWithDetail(
      FirstText({message, second.error, L"登录失败，请检查邮箱密码或面板地址"}), L"LOGIN",
      second.status);
  panel_.credential.clear();
  return false;
}

Status XboardControlPlane::signIn(const std::wstring& email, const std::wstring& authData) {
  email_ = email;
  panel_.credential = authData;
  return SaveCredential(credentialPath_, email, authData);
}

bool XboardControlPlane::logout() {
  panel_.credential.clear();
  email_.clear();
  return DeleteFileW(credentialPath_.c_str()) != FALSE;
}

Status XboardControlPlane::requireSignIn() const {
  return panel_.credential.empty() ? Status::failure(L"请先登录") : Status::success();
}

Status XboardControlPlane::fetch(const std::wstring& path, std::string& body) const {
  return requireSignIn().andThen([&] {
    PanelReply reply = panel_.get(path);
    body = std::move(reply.body);
    return reply.ok() ? Status::success() : Status::failure(reply.error);
  });
}

}  // namespace vpn
