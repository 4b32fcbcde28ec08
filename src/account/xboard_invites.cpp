#include <algorithm>

#include "src/account/xboard_control_plane.h"
#include "src/common/number_text.h"
#include "src/common/text.h"
#include "src/panel/endpoints.h"
#include "src/panel/json_reader.h"

namespace vpn {
namespace {

std::string FirstInviteCode(const std::string& response) {
  for (const std::string& row : JsonObjectArray(response, "codes")) {
    std::string code = JsonString(row, "code");
    if (!code.empty()) {
      return code;
    }
  }
  return {};
}

// Missing numbers stay 0, further ones are ignored.
void ReadStatistics(const std::string& response, InviteInfo& info) {
  std::vector<std::int64_t> numbers = JsonNumberArray(response, "stat");
  numbers.resize(4);
  info.stat0 = static_cast<std::int32_t>(numbers[0]);
  info.stat1 = numbers[1];
  info.stat2 = numbers[2];
  info.stat3 = static_cast<std::int32_t>(numbers[3]);
}

}  // namespace

std::wstring XboardControlPlane::inviteLinkBase() const {
  if (!inviteBase_.empty()) {
    return inviteBase_;
  }
  // The panel's web site stands beside its API's host; only scheme and host are wanted.
  constexpr std::wstring_view kApiLabel = L"://api.";
  std::wstring base = panel_.base;
  const size_t label = base.find(kApiLabel);
  if (label != std::wstring::npos) {
    base.replace(label, kApiLabel.size(), L"://");
  }
  const size_t scheme = base.find(L"://");
  if (scheme != std::wstring::npos) {
    base = base.substr(0, base.find(L'/', scheme + 3));
  }
  return TrimEndSlashes(base);
}

bool XboardControlPlane::fetchInvite(InviteInfo& info, std::wstring& error) {
  info = InviteInfo();
  const std::wstring path = L"/api/v1/user/invite/fetch";
  std::string response;
  if (!Succeeded(fetch(path, response), error)) {
    return false;
  }
  std::string code = FirstInviteCode(response);
  if (code.empty()) {
    (void)panel_.get(L"/api/v1/user/invite/save");  // makes a code; the next answer tells
    PanelReply again = panel_.get(path);
    if (again.ok()) {
      response = std::move(again.body);
      code = FirstInviteCode(response);
    }
    if (code.empty()) {
      error = L"面板没有返回邀请码";
      return false;
    }
  }
  info.code = Utf8ToWide(code);
  info.link = inviteLinkBase() + L"/i/?c=" + info.code;
  ReadStatistics(response, info);
  const PanelReply account = panel_.get(L"/api/v1/user/info");
  if (account.ok()) {
    info.balance = JsonInt(JsonDataObject(account.body), "balance", 0);
  }
  return true;
}

bool XboardControlPlane::fetchReferrals(std::int32_t page, std::vector<ReferralRow>& rows,
                                        std::int32_t& total, std::wstring& error) {
  rows.clear();
  total = 0;
  std::string response;
  if (!Succeeded(fetch(L"/api/v1/user/tvn_invite/referrals?page=" +
                           DecimalText(static_cast<unsigned>(std::max(page, 1))),
                       response),
                 error)) {
    return false;
  }
  total = static_cast<std::int32_t>(JsonInt(response, "total", 0));
  for (const std::string& element : JsonObjectArray(response, "data")) {
    ReferralRow row;
    row.emailMask = Utf8ToWide(JsonString(element, "email_mask"));
    row.createdAt = JsonInt(element, "created_at", 0);
    row.paid = JsonBool(element, "paid");
    row.commission = JsonInt(element, "commission", 0);
    rows.push_back(row);
  }
  return true;
}

}  // namespace vpn
