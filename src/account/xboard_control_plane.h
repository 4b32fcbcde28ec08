// The account backend that talks to an Xboard panel.
#ifndef TAVRIN_SRC_ACCOUNT_XBOARD_CONTROL_PLANE_H_
#define TAVRIN_SRC_ACCOUNT_XBOARD_CONTROL_PLANE_H_

#include "src/account/control_plane.h"
#include "src/panel/panel_client.h"

namespace vpn {

// Signed in exactly when there is a credential, from the credential file or from a login. It is
// never looked into, and is sent to the panel's and the device service's addresses only; when one
// of these answers with a redirect, the platform follows it and sends the credential along. Nothing
// is retried unless an operation says so.
class XboardControlPlane : public ControlPlane {
 public:
  // Takes the slashes off the ends of the three addresses and loads the credential file. A missing
  // or damaged file means signed out. No network work.
  XboardControlPlane(std::wstring apiBase, std::wstring credentialPath, std::wstring deviceApi,
                     std::wstring inviteBase);

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
  // Fails for a user who is signed out.
  Status requireSignIn() const;

  // Signed in with this credential, even when it can't be saved.
  Status signIn(const std::wstring& email, const std::wstring& authData);

  // `body` is what stands behind a path for a user who is signed in.
  Status fetch(const std::wstring& path, std::string& body) const;

  // Replaces `nodes` by those of the server list. A failed request tells `subscriptionError` unless
  // that is empty.
  Status fetchServers(const std::wstring& uuid, const std::wstring& subscriptionError,
                      std::vector<NodeInfo>& nodes) const;

  // Finishes a purchase whose order has been placed; its number is in UTF-8.
  Status checkOut(const std::string& tradeNo, PurchaseResult& result) const;

  // Base of invite links, without a slash at its end.
  std::wstring inviteLinkBase() const;

  PanelClient panel_;
  std::wstring credentialPath_;
  std::wstring deviceApi_;
  std::wstring inviteBase_;
  std::wstring email_;  // of the user who is signed in
};

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_XBOARD_CONTROL_PLANE_H_
