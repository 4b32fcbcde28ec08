#include "src/account/control_plane.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace vpn {
namespace {

TEST(Records, NodeInfoStartsEmptyButForFlowAndFingerprint) {
  const auto [name, address, port, uuid, flow, sni, fingerprint, publicKey, shortId] = NodeInfo();
  EXPECT_EQ(name, L"");
  EXPECT_EQ(address, L"");
  EXPECT_EQ(port, 0);
  EXPECT_EQ(uuid, L"");
  EXPECT_EQ(flow, L"xtls-rprx-vision");
  EXPECT_EQ(sni, L"");
  EXPECT_EQ(fingerprint, L"chrome");
  EXPECT_EQ(publicKey, L"");
  EXPECT_EQ(shortId, L"");
  static_assert(std::is_same_v<decltype(port), const std::int32_t>);
}

TEST(Records, NodeInfoIsDeclaredInItsOrder) {
  const NodeInfo node = {L"1", L"2", 3, L"4", L"5", L"6", L"7", L"8", L"9"};
  EXPECT_EQ(node.name + node.address, L"12");
  EXPECT_EQ(node.port, 3);
  EXPECT_EQ(node.uuid + node.flow + node.sni + node.fingerprint + node.publicKey + node.shortId,
            L"456789");
}

TEST(Records, AccountSessionStartsEmpty) {
  const AccountSession session;
  EXPECT_FALSE(session.loggedIn);
  EXPECT_FALSE(session.expired);
  EXPECT_FALSE(session.hasPlan);
  EXPECT_EQ(session.deviceLimit, 0);
  EXPECT_EQ(session.deviceUsed, 0);
  EXPECT_EQ(session.planId, 0);
  EXPECT_EQ(session.expiresAt, 0);
  EXPECT_EQ(session.transferEnable, 0);
  EXPECT_EQ(session.transferUsed, 0);
  EXPECT_EQ(session.email + session.planName + session.expiryDate, L"");
  EXPECT_TRUE(session.nodes.empty());
}

TEST(Records, AccountSessionIsDeclaredInItsOrderWithItsWidths) {
  const auto [loggedIn, expired, hasPlan, deviceLimit, deviceUsed, email, planName, planId,
              expiryDate, expiresAt, transferEnable, transferUsed, nodes] =
      AccountSession{true,
                     false,
                     true,
                     2,
                     3,
                     L"e",
                     L"n",
                     4,
                     L"d",
                     5'000'000'000,
                     6'000'000'000,
                     7'000'000'000,
                     {NodeInfo{L"node", L"", 0, L"", L"", L"", L"", L"", L""}}};
  EXPECT_TRUE(loggedIn && !expired && hasPlan);
  EXPECT_EQ(deviceLimit, 2);
  EXPECT_EQ(deviceUsed, 3);
  EXPECT_EQ(email, L"e");
  EXPECT_EQ(planName, L"n");
  EXPECT_EQ(planId, 4);
  EXPECT_EQ(expiryDate, L"d");
  EXPECT_EQ(expiresAt, 5'000'000'000);
  EXPECT_EQ(transferEnable, 6'000'000'000);
  EXPECT_EQ(transferUsed, 7'000'000'000);
  ASSERT_EQ(nodes.size(), 1u);
  EXPECT_EQ(nodes[0].name, L"node");
}

TEST(Records, RegisterConfigIsThreeFlagsThatStartFalse) {
  const auto [emailVerify, inviteForce, recaptcha] = RegisterConfig();
  EXPECT_FALSE(emailVerify || inviteForce || recaptcha);
  EXPECT_TRUE((RegisterConfig{true, false, false}.emailVerify));
  EXPECT_TRUE((RegisterConfig{false, true, false}.inviteForce));
  EXPECT_TRUE((RegisterConfig{false, false, true}.recaptcha));
}

TEST(Records, PlanOptionIsDeclaredInItsOrder) {
  const PlanOption plan = {1,    2,    3,    L"4",  L"5",  L"6",
                           L"7", L"8", L"9", L"10", L"11", 12'000'000'000};
  EXPECT_EQ(plan.planId, 1);
  EXPECT_EQ(plan.days, 2);
  EXPECT_EQ(plan.deviceLimit, 3);
  EXPECT_EQ(plan.name, L"4");
  EXPECT_EQ(plan.period, L"5");
  EXPECT_EQ(plan.periodLabel, L"6");
  EXPECT_EQ(plan.durationLabel, L"7");
  EXPECT_EQ(plan.dailyPrice, L"8");
  EXPECT_EQ(plan.tag, L"9");
  EXPECT_EQ(plan.priceText, L"10");
  EXPECT_EQ(plan.trafficText, L"11");
  EXPECT_EQ(plan.priceCents, 12'000'000'000);
}

TEST(Records, PlanOptionStartsEmpty) {
  const PlanOption plan;
  EXPECT_EQ(plan.planId + plan.days + plan.deviceLimit, 0);
  EXPECT_EQ(plan.priceCents, 0);
  EXPECT_EQ(plan.name + plan.period + plan.periodLabel + plan.durationLabel + plan.dailyPrice +
                plan.tag + plan.priceText + plan.trafficText,
            L"");
}

TEST(Records, PurchaseResultStartsEmptyAndIsDeclaredInItsOrder) {
  const PurchaseResult empty;
  EXPECT_FALSE(empty.activated);
  EXPECT_EQ(empty.tradeNo + empty.payUrl + empty.message, L"");
  const PurchaseResult result = {true, L"1", L"2", L"3"};
  EXPECT_TRUE(result.activated);
  EXPECT_EQ(result.tradeNo, L"1");
  EXPECT_EQ(result.payUrl, L"2");
  EXPECT_EQ(result.message, L"3");
}

TEST(Records, InviteInfoStartsEmptyAndHoldsTheFourthNumberBesideTheFirst) {
  const InviteInfo empty;
  EXPECT_EQ(empty.code + empty.link, L"");
  EXPECT_EQ(empty.stat0 + empty.stat3 + empty.stat1 + empty.stat2 + empty.balance, 0);
  const InviteInfo info = {L"c", L"l", 10, 13, 11'000'000'000, 12'000'000'000, 5'000'000'000};
  EXPECT_EQ(info.code, L"c");
  EXPECT_EQ(info.link, L"l");
  EXPECT_EQ(info.stat0, 10);
  EXPECT_EQ(info.stat3, 13);
  EXPECT_EQ(info.stat1, 11'000'000'000);
  EXPECT_EQ(info.stat2, 12'000'000'000);
  EXPECT_EQ(info.balance, 5'000'000'000);
}

TEST(Records, ReferralRowStartsEmptyAndIsDeclaredInItsOrder) {
  const ReferralRow empty;
  EXPECT_EQ(empty.emailMask, L"");
  EXPECT_EQ(empty.createdAt, 0);
  EXPECT_FALSE(empty.paid);
  EXPECT_EQ(empty.commission, 0);
  const ReferralRow row = {L"a***", 5'000'000'000, true, 6'000'000'000};
  EXPECT_EQ(row.emailMask, L"a***");
  EXPECT_EQ(row.createdAt, 5'000'000'000);
  EXPECT_TRUE(row.paid);
  EXPECT_EQ(row.commission, 6'000'000'000);
}

// Where an operation stands in the virtual table, as this compiler's pointers to members tell:
// one more than its offset in bytes.
template <class Member>
std::uintptr_t SlotOf(Member member) {
  std::uintptr_t offset = 0;
  std::memcpy(&offset, &member, sizeof offset);
  return (offset - 1) / sizeof(void*);
}

TEST(ControlPlane, OperationsStandInTheVirtualTableInTheirFixedOrder) {
  const std::vector<std::uintptr_t> slots = {
      SlotOf(&ControlPlane::login),         SlotOf(&ControlPlane::fetchAccount),
      SlotOf(&ControlPlane::logout),        SlotOf(&ControlPlane::fetchRegisterConfig),
      SlotOf(&ControlPlane::sendEmailCode), SlotOf(&ControlPlane::registerAccount),
      SlotOf(&ControlPlane::resetPassword), SlotOf(&ControlPlane::fetchPlans),
      SlotOf(&ControlPlane::purchasePlan),  SlotOf(&ControlPlane::checkOrderPaid),
      SlotOf(&ControlPlane::fetchInvite),   SlotOf(&ControlPlane::fetchReferrals),
      SlotOf(&ControlPlane::claimDevice)};
  // The destructor comes first and takes two entries with this compiler.
  EXPECT_EQ(slots, (std::vector<std::uintptr_t>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
  EXPECT_TRUE(std::has_virtual_destructor_v<ControlPlane>);
  EXPECT_TRUE(std::is_abstract_v<ControlPlane>);
  EXPECT_EQ(sizeof(ControlPlane), sizeof(void*)) << "the base class holds no data";
}

}  // namespace
}  // namespace vpn
