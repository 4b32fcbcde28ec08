// The account backend that needs no panel: one account and one node from `account.json`.
#ifndef TAVRIN_SRC_ACCOUNT_LOCAL_CONTROL_PLANE_H_
#define TAVRIN_SRC_ACCOUNT_LOCAL_CONTROL_PLANE_H_

#include "src/account/control_plane.h"

namespace vpn {

// Keeps nothing in memory: each call reads its files anew. The shop, invite and registration
// operations answer that this environment does not offer them.
class LocalControlPlane : public ControlPlane {
 public:
  // `account.json`, and the file that makes the difference between signed in and not.
  LocalControlPlane(std::wstring accountPath, std::wstring credentialPath);

  bool login(const std::wstring& email, const std::wstring& password, std::wstring& error) override;
  bool fetchAccount(AccountSession& session, std::wstring& error) override;
  bool logout() override;
  bool fetchRegisterConfig(RegisterConfig& config, std::wstring& error) override;
  bool sendEmailCode(const std::wstring& email, std::wstring& error) override;
  bool registerAccount(const std::wstring& email, const std::wstring& password,
                       const std::wstring& inviteCode, const std::wstring& emailCode,
                       std::wstring& error) override;
  bool resetPassword(const std::wstring& email, const std::wstring& emailCode,
                     const std::wstring& newPassword, std::wstring& error) override;
  bool fetchPlans(std::vector<PlanOption>& plans, std::wstring& error) override;
  bool purchasePlan(std::int32_t planId, const std::wstring& period, PurchaseResult& result,
                    std::wstring& error) override;
  bool checkOrderPaid(const std::wstring& tradeNo, bool& paid, std::wstring& error) override;
  bool fetchInvite(InviteInfo& info, std::wstring& error) override;
  bool fetchReferrals(std::int32_t page, std::vector<ReferralRow>& rows, std::int32_t& total,
                      std::wstring& error) override;
  bool claimDevice(const std::wstring& deviceId, std::int32_t& used, std::int32_t& limit,
                   std::wstring& error) override;

 private:
  std::wstring accountPath_;
  std::wstring credentialPath_;
};

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_LOCAL_CONTROL_PLANE_H_
