// Invite codes and referrals.
#include "tests/e2e/panel/account/account_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr char kFetch[] = "GET /api/v1/user/invite/fetch";
constexpr char kMake[] = "GET /api/v1/user/invite/save";
constexpr char kInfo[] = "GET /api/v1/user/info";

class Invites : public AccountTest {
 protected:
  bool Fetch() {
    error.clear();
    vpn::XboardControlPlane plane = SignedIn();
    return plane.fetchInvite(info, error);
  }

  bool FetchPage(std::int32_t page) {
    error.clear();
    vpn::XboardControlPlane plane = SignedIn();
    return plane.fetchReferrals(page, rows, total, error);
  }

  void SetCodes(const Json& codes) const { panel.SetUser({{"codes", codes}}); }

  void SetReferrals(int count) const {
    Json referrals = Json::array();
    for (int i = 1; i <= count; ++i) {
      referrals.push_back({{"email_mask", "客" + std::to_string(i) + "***@mail.example"},
                           {"created_at", 1760000000 + i},
                           {"paid", i % 2 == 1},
                           {"commission", 100 * i}});
    }
    panel.SetUser({{"referrals", referrals}});
  }

  vpn::InviteInfo info;
  std::vector<vpn::ReferralRow> rows;
  std::int32_t total = 77;
};

TEST_F(Invites, CodeIsMadeOnFirstUse) {
  ASSERT_TRUE(Fetch()) << standins::ToUtf8(error);
  ExpectLines(panel.Sequence(), {kFetch, kMake, kFetch, kInfo});
  EXPECT_EQ(info.code.size(), 8U);
  EXPECT_EQ(standins::ToUtf8(info.code), panel.User()["codes"][0]["code"]);
  EXPECT_EQ(info.link, apiBase + L"/i/?c=" + info.code);
  EXPECT_EQ(info.stat0, 3);
  EXPECT_EQ(info.stat1, 1250);
  EXPECT_EQ(info.stat2, 70);
  EXPECT_EQ(info.stat3, 10);
  EXPECT_EQ(info.balance, 1250);
}

TEST_F(Invites, FirstUnusedCodeIsShown) {
  SetCodes({{{"code", "USED0001"}, {"status", 1}},
            {{"code", "FREE0002"}, {"status", 0}},
            {{"code", "FREE0003"}, {"status", 0}}});
  inviteBase = L"https://www.panel.example/welcome//";
  ASSERT_TRUE(Fetch());
  EXPECT_EQ(info.code, L"FREE0002");
  EXPECT_EQ(info.link, L"https://www.panel.example/welcome/i/?c=FREE0002");
  ExpectLines(panel.Sequence(), {kFetch, kInfo});
}

// The panel makes five codes for a user and no more.
TEST_F(Invites, UserWhoseCodesAreAllUsedUp) {
  Json codes = Json::array();
  for (int i = 0; i < 5; ++i)
    codes.push_back({{"code", "USED000" + std::to_string(i)}, {"status", 1}});
  SetCodes(codes);
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板没有返回邀请码");
  EXPECT_EQ(info.link, L"");
}

TEST_F(Invites, BalanceThatCannotBeReadIsNoFailure) {
  panel.Answer("/api/v1/user/info", 500);
  ASSERT_TRUE(Fetch());
  EXPECT_EQ(info.balance, 0);
  EXPECT_EQ(error, L"");
}

TEST_F(Invites, PanelThatFailsAtOnce) {
  panel.Answer("/api/v1/user/invite/fetch", 502);
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板 HTTP 502");
  EXPECT_EQ(panel.Requests().size(), 1U);
}

TEST_F(Invites, ReferralsPageByPage) {
  SetReferrals(23);
  std::vector<vpn::ReferralRow> all;
  for (std::int32_t page = 1; page <= 3; ++page) {
    ASSERT_TRUE(FetchPage(page)) << page;
    EXPECT_EQ(total, 23);
    EXPECT_EQ(rows.size(), page < 3 ? 10U : 3U);
    all.insert(all.end(), rows.begin(), rows.end());
  }
  ASSERT_EQ(all.size(), 23U);
  EXPECT_EQ(all[0].emailMask, L"客1***@mail.example");
  EXPECT_TRUE(all[0].paid);
  EXPECT_EQ(all[22].emailMask, L"客23***@mail.example");
  EXPECT_EQ(all[21].createdAt, 1760000022);
  EXPECT_FALSE(all[21].paid);
  EXPECT_EQ(all[21].commission, 2200);
  ExpectLines(panel.Sequence(), {"GET /api/v1/user/tvn_invite/referrals?page=1",
                                 "GET /api/v1/user/tvn_invite/referrals?page=2",
                                 "GET /api/v1/user/tvn_invite/referrals?page=3"});
}

TEST_F(Invites, PageBehindTheLastIsEmpty) {
  SetReferrals(3);
  ASSERT_TRUE(FetchPage(2));
  EXPECT_TRUE(rows.empty());
  EXPECT_EQ(total, 3);
}

TEST_F(Invites, PagesBeginAtOne) {
  ASSERT_TRUE(FetchPage(0));
  ASSERT_TRUE(FetchPage(-3));
  EXPECT_EQ(total, 0);
  ExpectLines(panel.Sequence(), {"GET /api/v1/user/tvn_invite/referrals?page=1",
                                 "GET /api/v1/user/tvn_invite/referrals?page=1"});
}

TEST_F(Invites, PanelThatDoesNotKnowReferrals) {
  panel.Answer("/api/v1/user/tvn_invite/referrals", 404);
  EXPECT_FALSE(FetchPage(1));
  EXPECT_EQ(error, L"面板 HTTP 404");
  EXPECT_EQ(total, 0);
}

TEST_F(Invites, SignedOut) {
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.fetchInvite(info, error));
  EXPECT_EQ(error, L"请先登录");
  error.clear();
  EXPECT_FALSE(plane.fetchReferrals(1, rows, total, error));
  EXPECT_EQ(error, L"请先登录");
  EXPECT_TRUE(panel.Requests().empty());
}

}  // namespace
}  // namespace e2e
