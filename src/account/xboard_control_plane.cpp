#include "src/account/xboard_control_plane.h"

#include <windows.h>

#include <utility>

#include "src/common/files.h"
#include "src/common/text.h"
#include "src/panel/endpoints.h"
#include "src/panel/json_reader.h"

namespace vpn {
namespace {

bool Unreachable(std::wstring& error) {
  error = L"无法连接面板。";
  return false;
}

}  // namespace

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

bool XboardControlPlane::login(const std::wstring& /*address*/, const std::wstring& /*password*/,
                               std::wstring& error) {
  return Unreachable(error);
}

bool XboardControlPlane::fetchAccount(AccountSession& /*session*/, std::wstring& error) {
  return Unreachable(error);
}

bool XboardControlPlane::logout() {
  authData.clear();
  email.clear();
  return DeleteFileW(sessionPath.c_str()) != FALSE;
}

bool XboardControlPlane::fetchRegisterConfig(RegisterConfig& config, std::wstring& error) {
  config = RegisterConfig();
  return Unreachable(error);
}

bool XboardControlPlane::sendEmailCode(const std::wstring& /*address*/, std::wstring& error) {
  return Unreachable(error);
}

bool XboardControlPlane::registerAccount(const std::wstring& /*address*/,
                                         const std::wstring& /*password*/,
                                         const std::wstring& /*inviteCode*/,
                                         const std::wstring& /*emailCode*/, std::wstring& error) {
  return Unreachable(error);
}

bool XboardControlPlane::resetPassword(const std::wstring& /*address*/,
                                       const std::wstring& /*emailCode*/,
                                       const std::wstring& /*newPassword*/, std::wstring& error) {
  return Unreachable(error);
}

bool XboardControlPlane::fetchPlans(std::vector<PlanOption>& /*plans*/, std::wstring& error) {
  return Unreachable(error);  // the list is emptied only when the panel has answered
}

bool XboardControlPlane::purchasePlan(std::int32_t /*planId*/, const std::wstring& /*period*/,
                                      PurchaseResult& result, std::wstring& error) {
  result = PurchaseResult();
  return Unreachable(error);
}

bool XboardControlPlane::checkOrderPaid(const std::wstring& /*tradeNo*/, bool& paid,
                                        std::wstring& error) {
  paid = false;
  return Unreachable(error);
}

bool XboardControlPlane::fetchInvite(InviteInfo& info, std::wstring& error) {
  info = InviteInfo();
  return Unreachable(error);
}

bool XboardControlPlane::fetchReferrals(std::int32_t /*page*/, std::vector<ReferralRow>& rows,
                                        std::int32_t& total, std::wstring& error) {
  rows.clear();
  total = 0;
  return Unreachable(error);
}

bool XboardControlPlane::claimDevice(const std::wstring& /*deviceId*/, std::int32_t& used,
                                     std::int32_t& limit, std::wstring& error) {
  used = 0;
  limit = 0;
  return Unreachable(error);
}

}  // namespace vpn
