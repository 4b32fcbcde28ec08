// The account backend that talks to an Xboard panel.
#ifndef TAVRIN_SRC_ACCOUNT_XBOARD_CONTROL_PLANE_H_
#define TAVRIN_SRC_ACCOUNT_XBOARD_CONTROL_PLANE_H_

#include "src/account/control_plane.h"

namespace vpn {

// Holds the panel's addresses and the credential of an earlier session. It can't reach a panel yet:
// every operation but `logout` fails, and says so.
class XboardControlPlane : public ControlPlane {
 public:
  // Takes the slashes off the ends of the three addresses and loads the earlier session from
  // `session`, a file. A missing or damaged file means signed out. No network work.
  XboardControlPlane(std::wstring api, std::wstring session, std::wstring device,
                     std::wstring invite);

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
  void loadSession();

  std::wstring apiBase;
  std::wstring sessionPath;
  std::wstring deviceApi;
  std::wstring inviteBase;
  std::wstring authData;  // the credential; empty means signed out
  std::wstring email;     // the signed-in address
};

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_XBOARD_CONTROL_PLANE_H_
