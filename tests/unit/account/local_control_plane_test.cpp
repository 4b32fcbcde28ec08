#include "src/account/local_control_plane.h"

#include <cstdint>
#include <string>
#include <vector>

#include "tests/unit/account/local_plane_test.h"

namespace vpn {
namespace {

class Local : public LocalPlaneTest {};

TEST_F(Local, ConstructionDoesNoFileWork) {
  const LocalControlPlane other(accountPath, sessionPath);
  EXPECT_EQ(machine.calls.Names(), Texts());
}

TEST_F(Local, LogoutDeletesTheSessionFileAndNothingElse) {
  PutSession();
  EXPECT_TRUE(local.logout());
  EXPECT_FALSE(machine.files.Exists(sessionPath));
  EXPECT_TRUE(machine.files.Exists(accountPath));
  EXPECT_EQ(machine.calls.Names(), Texts{"DeleteFileW"});
  EXPECT_EQ(machine.calls.TextsOf("DeleteFileW"), Texts{R"("C:\run\session.json")"});
}

TEST_F(Local, LogoutHandsBackTheResultOfTheDeletion) {
  EXPECT_FALSE(local.logout()) << "there was no file";
  PutSession();
  machine.faults.Fail("DeleteFileW");
  EXPECT_FALSE(local.logout());
  EXPECT_TRUE(machine.files.Exists(sessionPath));
}

// The operations that there are none of here ------------------------------------------------------

// Each sets its text, puts its outputs back to the start, and calls nothing of the platform.
class LocalUnsupported : public Local {
 protected:
  void TearDown() override {
    EXPECT_EQ(machine.calls.Names(), Texts());
    Local::TearDown();
  }
};

TEST_F(LocalUnsupported, FetchRegisterConfig) {
  RegisterConfig config = {true, true, true};
  EXPECT_FALSE(local.fetchRegisterConfig(config, error));
  EXPECT_EQ(error, L"当前环境不支持注册");
  EXPECT_FALSE(config.emailVerify || config.inviteForce || config.recaptcha);
}

TEST_F(LocalUnsupported, SendEmailCode) {
  EXPECT_FALSE(local.sendEmailCode(L"user@example.com", error));
  EXPECT_EQ(error, L"当前环境不支持发送验证码");
}

TEST_F(LocalUnsupported, RegisterAccount) {
  EXPECT_FALSE(local.registerAccount(L"user@example.com", L"secret", L"i", L"c", error));
  EXPECT_EQ(error, L"当前环境不支持注册");
}

TEST_F(LocalUnsupported, ResetPassword) {
  EXPECT_FALSE(local.resetPassword(L"user@example.com", L"c", L"secret", error));
  EXPECT_EQ(error, L"当前环境不支持找回密码");
}

TEST_F(LocalUnsupported, FetchPlans) {
  std::vector<PlanOption> plans(2);
  EXPECT_FALSE(local.fetchPlans(plans, error));
  EXPECT_EQ(error, L"当前环境不支持购买套餐");
  EXPECT_TRUE(plans.empty());
}

TEST_F(LocalUnsupported, PurchasePlan) {
  PurchaseResult result = {true, L"t", L"u", L"m"};
  EXPECT_FALSE(local.purchasePlan(1, L"month_price", result, error));
  EXPECT_EQ(error, L"当前环境不支持购买套餐");
  EXPECT_FALSE(result.activated);
  EXPECT_EQ(result.tradeNo + result.payUrl + result.message, L"");
}

TEST_F(LocalUnsupported, CheckOrderPaid) {
  bool paid = true;
  EXPECT_FALSE(local.checkOrderPaid(L"t", paid, error));
  EXPECT_EQ(error, L"当前环境不支持查询订单");
  EXPECT_FALSE(paid);
}

TEST_F(LocalUnsupported, FetchInvite) {
  InviteInfo info = {L"c", L"l", 1, 2, 3, 4, 5};
  EXPECT_FALSE(local.fetchInvite(info, error));
  EXPECT_EQ(error, L"当前环境不支持邀请");
  EXPECT_EQ(info.code + info.link, L"");
  EXPECT_EQ(info.stat0 + info.stat3, 0);
  EXPECT_EQ(info.stat1 + info.stat2 + info.balance, 0);
}

TEST_F(LocalUnsupported, FetchReferrals) {
  std::vector<ReferralRow> rows(2);
  std::int32_t total = 2;
  EXPECT_FALSE(local.fetchReferrals(1, rows, total, error));
  EXPECT_EQ(error, L"当前环境不支持邀请");
  EXPECT_TRUE(rows.empty());
  EXPECT_EQ(total, 0);
}

TEST_F(LocalUnsupported, ClaimDeviceIsTheExceptionAndAlwaysGivesOneOfOne) {
  for (const wchar_t* device : {L"", L"device"}) {
    std::int32_t used = 7;
    std::int32_t limit = 9;
    EXPECT_TRUE(local.claimDevice(device, used, limit, error));
    EXPECT_EQ(used, 1);
    EXPECT_EQ(limit, 1);
    EXPECT_EQ(error, L"earlier");
  }
}

}  // namespace
}  // namespace vpn
