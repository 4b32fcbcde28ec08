// The account backend that talks to an Xboard panel.
#ifndef TAVRIN_SRC_ACCOUNT_XBOARD_CONTROL_PLANE_H_
#define TAVRIN_SRC_ACCOUNT_XBOARD_CONTROL_PLANE_H_

#include "src/account/control_plane.h"

namespace vpn {

// Signed in exactly when there is a credential, from the session file or from a login. It is sent
// to the panel's and the device service's addresses only, though whither these redirect is their
// affair, and so is what it looks like. Nothing is retried unless an operation says so.
class XboardControlPlane : public ControlPlane {
 public:
  // Takes the slashes off the ends of the three addresses and loads the earlier session from
  // `session`, a file. A missing or damaged file means signed out. No network work.
  XboardControlPlane(std::wstring api, std::wstring session, std::wstring device,
                     std::wstring invite);

  bool login(const std::wstring& address, const std::wstring& password,
             std::wstring& error) override;
  bool fetchAccount(AccountSession& session, std::wstring& error) override;
  bool logout() override;
  bool fetchRegisterConfig(RegisterConfig& config, std::wstring& error) override;
  bool sendEmailCode(const std::wstring& address, std::wstring& error) override;
  bool registerAccount(const std::wstring& address, const std::wstring& password,
                       const std::wstring& inviteCode, const std::wstring& emailCode,
                       std::wstring& error) override;
  bool resetPassword(const std::wstring& address, const std::wstring& emailCode,
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
  // Signed in as `address` with the credential of the moment; false when the file can't be saved,
  // with the object signed in all the same.
  bool keepSession(const std::wstring& address, std::wstring& error);

  // False with the text for a user who is signed out.
  bool requireSignIn(std::wstring& error) const;

  // The fall-back of `fetchAccount`: replaces `nodes` by those of the server list. `keepError`: a
  // failed request leaves the text that the subscription's failure put into `error`.
  bool fetchServers(const std::wstring& uuid, bool keepError, std::vector<NodeInfo>& nodes,
                    std::wstring& error);

  // Cancels an order; an empty number is none. The outcome is nobody's concern.
  void CancelOrder(const std::string& tradeNo);
  // Cancels the orders that an earlier attempt left open, since with one the panel refuses the
  // next.
  void CancelOpenOrders();
  // `tradeNo` is the panel's order number, in UTF-8.
  bool PlaceOrder(std::int32_t planId, const std::wstring& period, std::string& tradeNo,
                  std::wstring& error);
  // Finishes a purchase whose order has been placed.
  bool CheckOut(const std::string& tradeNo, PurchaseResult& result, std::wstring& error);
  // Id of the first payment method that the panel lists, 0 when there is none.
  std::int64_t FirstPaymentMethod();
  // Base of invite links, without a slash at its end.
  std::wstring InviteLinkBase() const;

  std::wstring apiBase;
  std::wstring sessionPath;
  std::wstring deviceApi;
  std::wstring inviteBase;
  std::wstring authData;  // the credential; empty means signed out
  std::wstring email;     // the signed-in address
};

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_XBOARD_CONTROL_PLANE_H_
