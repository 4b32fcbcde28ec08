// What a user without a working login does. None of these requests carries a credential; the last
// two end signed in, if at all possible by the ordinary login.
#include "src/account/credential.h"
#include "src/account/failure_text.h"
#include "src/account/xboard_control_plane.h"
#include "src/panel/json_reader.h"
#include "src/panel/request_text.h"

namespace vpn {
namespace {

std::wstring RefusalText(const PanelReply& reply, const wchar_t* step) {
  return PanelErrorWithDetail(FirstText({MessageIn(reply.body), reply.error}), step, reply.status);
}

// Explains a registration that did not sign the user in.
std::wstring RegistrationError(const std::string& response, const std::wstring& otherwise) {
  const std::wstring message = MessageIn(response);
  const bool isKnown = message.find(L"已存在") != std::wstring::npos;
  return isKnown ? L"这个邮箱已经注册过了，请用下面的「去登录」进入"
                 : FirstText({message, otherwise, L"注册失败"});
}

}  // namespace

bool XboardControlPlane::fetchRegisterConfig(RegisterConfig& config, std::wstring& error) {
  config = RegisterConfig();
  const PanelClient guest = panel_.signedOut();
  PanelReply reply = guest.get(L"/api/v1/guest/comm/config");
  if (!reply.ok()) {
    reply = guest.get(L"/api/v1/passport/comm/config");
  }
  if (!reply.ok()) {
    error = PanelErrorWithDetail(reply.error, L"CFG", reply.status);
    return false;
  }
  const std::string data = JsonDataObject(reply.body);
  config.emailVerify = JsonBool(data, "is_email_verify");
  config.inviteForce = JsonBool(data, "is_invite_force");
  config.recaptcha = JsonBool(data, "is_recaptcha");
  return true;
}

bool XboardControlPlane::sendEmailCode(const std::wstring& email, std::wstring& error) {
  const PanelReply reply = panel_.signedOut().post(L"/api/v1/passport/comm/sendEmailVerify",
                                                   JsonBody().addText("email", email).str());
  if (!reply.ok()) {
    error = RefusalText(reply, L"SEND");
  }
  return reply.ok();
}

bool XboardControlPlane::registerAccount(const std::wstring& email, const std::wstring& password,
                                         const std::wstring& inviteCode,
                                         const std::wstring& emailCode, std::wstring& error) {
  JsonBody body;
  body.addText("email", email).addText("password", password);
  if (!inviteCode.empty()) {
    body.addText("invite_code", inviteCode);
  }
  if (!emailCode.empty()) {
    body.addText("email_code", emailCode);
  }
  const PanelReply reply = panel_.signedOut().post(L"/api/v1/passport/auth/register", body.str());
  const std::wstring authData = ExtractAuthData(reply);
  if (!authData.empty()) {
    return Succeeded(signIn(email, authData), error);
  }
  if (!reply.ok()) {
    error = reply.error;
  }
  // The panel may have registered the user without handing out a credential, and the user may have
  // been registered before.
  std::wstring loginError;
  if (login(email, password, loginError)) {
    return true;
  }
  error = PanelErrorWithDetail(RegistrationError(reply.body, error), L"REG", reply.status);
  panel_.credential.clear();  // the login may have failed in saving it alone
  return false;
}

bool XboardControlPlane::resetPassword(const std::wstring& email, const std::wstring& emailCode,
                                       const std::wstring& newPassword, std::wstring& error) {
  const std::string body = JsonBody()
                               .addText("email", email)
                               .addText("email_code", emailCode)
                               .addText("password", newPassword)
                               .str();
  const PanelReply reply = panel_.signedOut().post(L"/api/v1/passport/auth/forget", body);
  if (!reply.ok()) {
    error = RefusalText(reply, L"RESET");
    return false;
  }
  std::wstring loginError;
  if (login(email, newPassword, loginError)) {
    return true;
  }
  error = PanelErrorWithDetail(L"密码已重置，请用新密码登录", L"RESET", 0);
  return false;
}

}  // namespace vpn
