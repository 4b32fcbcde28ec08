#include "src/account/local_control_plane.h"

#include <windows.h>

#include <utility>

#include "src/account/local_account.h"
#include "src/common/text.h"

namespace vpn {
namespace {

// How an operation ends that this environment does not offer.
template <class... Outputs>
bool Unsupported(const wchar_t* text, std::wstring& error, Outputs&... outputs) {
  ((outputs = Outputs()), ...);
  error = text;
  return false;
}

std::wstring ReadWide(const std::string& json, std::string_view key) {
  return Utf8ToWide(FlatJsonString(json, key));
}

NodeInfo ReadNode(const std::string& account) {
  NodeInfo node;
  node.name = ReadWide(account, "nodeName");
  node.address = ReadWide(account, "address");
  node.port = FlatJsonInt(account, "port", 0);
  node.uuid = ReadWide(account, "uuid");
  AssignIfGiven(FlatJsonString(account, "flow"), node.flow);
  node.sni = ReadWide(account, "sni");
  AssignIfGiven(FlatJsonString(account, "fingerprint"), node.fingerprint);
  node.publicKey = ReadWide(account, "publicKey");
  node.shortId = ReadWide(account, "shortId");
  return node;
}

}  // namespace

LocalControlPlane::LocalControlPlane(std::wstring accountPath, std::wstring credentialPath)
    : accountPath_(std::move(accountPath)), credentialPath_(std::move(credentialPath)) {}

bool LocalControlPlane::login(const std::wstring& email, const std::wstring& password,
                              std::wstring& error) {
  std::string account;
  if (!Succeeded(ReadTextFile(accountPath_, account), error)) {
    return false;
  }
  if (email != ReadWide(account, "email") || password != ReadWide(account, "password")) {
    error = L"email or password is incorrect";
    return false;
  }
  const std::string expireAt = FlatJsonString(account, "expireAt");
  if (IsDatePast(expireAt)) {
    error = L"account expired";
    return false;
  }
  // Neither value is escaped; the reader does not decode either.
  const std::string line =
      R"({"email":")" + WideToUtf8(email) + R"(","expireAt":")" + expireAt + "\"}\n";
  return Succeeded(WriteTextFile(credentialPath_, line), error);
}

bool LocalControlPlane::fetchAccount(AccountSession& session, std::wstring& error) {
  session = AccountSession();
  std::string stored;
  if (!ReadTextFile(credentialPath_, stored)) {
    error = L"not logged in";
    return false;
  }
  std::string account;
  if (!Succeeded(ReadTextFile(accountPath_, account), error)) {
    return false;
  }
  const std::string expireAt = FlatJsonString(account, "expireAt");
  session.email = ReadWide(stored, "email");
  session.expiryDate = Utf8ToWide(expireAt);
  session.expired = IsDatePast(expireAt);
  session.hasPlan = !session.expired;
  session.deviceLimit = FlatJsonInt(account, "deviceLimit", 1);
  session.deviceUsed = 1;
  session.loggedIn = !session.email.empty() && session.email == ReadWide(account, "email");
  if (!session.loggedIn) {
    error = L"session does not match account";
    return false;
  }
  if (session.expired) {
    error = L"account expired";
    return false;
  }
  const NodeInfo node = ReadNode(account);
  session.nodes = {node};
  if (node.address.empty() || node.uuid.empty() || node.port == 0) {
    error = L"account.json is missing node fields";
    return false;
  }
  return true;
}

bool LocalControlPlane::logout() {
  return DeleteFileW(credentialPath_.c_str()) != FALSE;
}

bool LocalControlPlane::fetchRegisterConfig(RegisterConfig& config, std::wstring& error) {
  return Unsupported(L"当前环境不支持注册", error, config);
}

bool LocalControlPlane::sendEmailCode(const std::wstring& /*email*/, std::wstring& error) {
  return Unsupported(L"当前环境不支持发送验证码", error);
}

bool LocalControlPlane::registerAccount(const std::wstring& /*email*/,
                                        const std::wstring& /*password*/,
                                        const std::wstring& /*inviteCode*/,
                                        const std::wstring& /*emailCode*/, std::wstring& error) {
  return Unsupported(L"当前环境不支持注册", error);
}

bool LocalControlPlane::resetPassword(const std::wstring& /*email*/,
                                      const std::wstring& /*emailCode*/,
                                      const std::wstring& /*newPassword*/, std::wstring& error) {
  return Unsupported(L"当前环境不支持找回密码", error);
}

bool LocalControlPlane::fetchPlans(std::vector<PlanOption>& plans, std::wstring& error) {
  return Unsupported(L"当前环境不支持购买套餐", error, plans);
}

bool LocalControlPlane::purchasePlan(std::int32_t /*planId*/, const std::wstring& /*period*/,
                                     PurchaseResult& result, std::wstring& error) {
  return Unsupported(L"当前环境不支持购买套餐", error, result);
}

bool LocalControlPlane::checkOrderPaid(const std::wstring& /*tradeNo*/, bool& paid,
                                       std::wstring& error) {
  return Unsupported(L"当前环境不支持查询订单", error, paid);
}

bool LocalControlPlane::fetchInvite(InviteInfo& info, std::wstring& error) {
  return Unsupported(L"当前环境不支持邀请", error, info);
}

bool LocalControlPlane::fetchReferrals(std::int32_t /*page*/, std::vector<ReferralRow>& rows,
                                       std::int32_t& total, std::wstring& error) {
  return Unsupported(L"当前环境不支持邀请", error, rows, total);
}

bool LocalControlPlane::claimDevice(const std::wstring& /*deviceId*/, std::int32_t& used,
                                    std::int32_t& limit, std::wstring& /*error*/) {
  used = 1;
  limit = 1;
  return true;
}

}  // namespace vpn
