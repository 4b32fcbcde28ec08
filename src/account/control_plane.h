// The abstract backend of the user's account, and its plain records. All text is wide; a record
// starts out with zeros, false flags, empty texts and empty lists unless a default stands here.
#ifndef TAVRIN_SRC_ACCOUNT_CONTROL_PLANE_H_
#define TAVRIN_SRC_ACCOUNT_CONTROL_PLANE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "src/common/node_info.h"
#include "src/common/status.h"

namespace vpn {

// What `fetchAccount` delivers.
struct AccountSession {
  bool loggedIn = false;
  bool expired = false;
  bool hasPlan = false;
  std::int32_t deviceLimit = 0;
  std::int32_t deviceUsed = 0;
  std::wstring email;
  std::wstring planName;
  std::int32_t planId = 0;
  std::wstring expiryDate;          // a date as text; empty for no expiry
  std::int64_t expiresAt = 0;       // Unix seconds; 0 or negative for no expiry
  std::int64_t transferEnable = 0;  // bytes
  std::int64_t transferUsed = 0;    // bytes, upload and download
  std::vector<NodeInfo> nodes;      // in the source's order
};

// What a registration needs.
struct RegisterConfig {
  bool emailVerify = false;
  bool inviteForce = false;
  bool recaptcha = false;
};

// One plan at one price period.
struct PlanOption {
  std::int32_t planId = 0;
  std::int32_t days = 0;  // length of the period; 0 for the one-time price
  std::int32_t deviceLimit = 0;
  std::wstring name;
  std::wstring period;  // price key such as "month_price", handed back to `purchasePlan`
  std::wstring periodLabel;
  std::wstring durationLabel;
  std::wstring dailyPrice;
  std::wstring tag;
  std::wstring priceText;
  std::wstring trafficText;
  std::int64_t priceCents = 0;  // hundredths of the currency unit
};

struct PurchaseResult {
  bool activated = false;  // took effect at once, nothing is to be paid
  std::wstring tradeNo;
  std::wstring payUrl;
  std::wstring message;
};

struct InviteInfo {
  std::wstring code;
  std::wstring link;
  std::int32_t stat0 = 0;  // first to fourth number of the panel's invite statistics
  std::int32_t stat3 = 0;
  std::int64_t stat1 = 0;
  std::int64_t stat2 = 0;
  std::int64_t balance = 0;
};

struct ReferralRow {
  std::wstring emailMask;
  std::int64_t createdAt = 0;  // Unix seconds
  bool paid = false;
  std::int64_t commission = 0;  // hundredths of the currency unit
};

// Ends an operation as its last step ended: true for success, else the step's text is in `error`.
inline bool Succeeded(const Status& step, std::wstring& error) {
  if (!step) {
    error = step.text();
  }
  return static_cast<bool>(step);
}

// Built for one use by one thread. Operations other than `logout` return true on success; on false
// `error` holds one line for the user. Output records are reset at the start of a call and then
// hold exactly what its steps assigned; only the panel's `fetchAccount` and `fetchPlans` leave them
// alone until the panel has answered. No operation keeps a reference to its arguments.
//
// What stands in `error` at the start of a call stays there on success, and matters as follows with
// the panel:
// - `fetchAccount`: a subscription that fails writes its text only into an empty `error`. There it
//   stays on success, and is told when the server list can't be fetched either; otherwise the
//   list's own failure is told.
// - `registerAccount`: when the panel accepts the registration without a credential or a message,
//   and the login fails, the text from the start is told, or a general one if there was none. On
//   success by way of the login, the text of a refused registration stays.
// - `login` and `purchasePlan` clear it before their second attempt.
class ControlPlane {
 public:
  virtual ~ControlPlane() = default;

  // Signs in and keeps the session.
  virtual bool login(const std::wstring& email, const std::wstring& password,
                     std::wstring& error) = 0;

  // The account and its nodes.
  virtual bool fetchAccount(AccountSession& session, std::wstring& error) = 0;

  // Forgets the session; the result is that of the deletion of its file.
  virtual bool logout() = 0;

  virtual bool fetchRegisterConfig(RegisterConfig& config, std::wstring& error) = 0;

  // Has a verification code mailed.
  virtual bool sendEmailCode(const std::wstring& email, std::wstring& error) = 0;

  // Registers; signed in afterwards. Empty codes are not sent.
  virtual bool registerAccount(const std::wstring& email, const std::wstring& password,
                               const std::wstring& inviteCode, const std::wstring& emailCode,
                               std::wstring& error) = 0;

  // Sets the password; signed in afterwards.
  virtual bool resetPassword(const std::wstring& email, const std::wstring& emailCode,
                             const std::wstring& newPassword, std::wstring& error) = 0;

  virtual bool fetchPlans(std::vector<PlanOption>& plans, std::wstring& error) = 0;

  // `period` as `PlanOption` has it.
  virtual bool purchasePlan(std::int32_t planId, const std::wstring& period, PurchaseResult& result,
                            std::wstring& error) = 0;

  // True means that the question was answered; `paid` holds the answer.
  virtual bool checkOrderPaid(const std::wstring& tradeNo, bool& paid, std::wstring& error) = 0;

  virtual bool fetchInvite(InviteInfo& info, std::wstring& error) = 0;

  virtual bool fetchReferrals(std::int32_t page, std::vector<ReferralRow>& rows,
                              std::int32_t& total, std::wstring& error) = 0;

  // Registers this computer against the plan's device limit.
  virtual bool claimDevice(const std::wstring& deviceId, std::int32_t& used, std::int32_t& limit,
                           std::wstring& error) = 0;
};

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_CONTROL_PLANE_H_
