// Who came through the user's invite code.
#include <string>
#include <vector>

#include "tests/unit/account/xboard_test.h"

namespace vpn {
namespace {

class Referrals : public XboardTest {
 protected:
  bool Fetch(std::int32_t page = 1) { return panel().fetchReferrals(page, rows, total, error); }
  void Answer(const std::string& body, const std::string& page = "1") {
    OnGet("user/tvn_invite/referrals?page=" + page, body);
  }

  std::vector<ReferralRow> rows = std::vector<ReferralRow>(2);
  std::int32_t total = 9;
};

TEST_F(Referrals, FillEveryFieldInThePanelsOrder) {
  Answer(
      R"({"total":57,"data":[{"email_mask":"a***@x.example","created_at":1749988800,"paid":true,)"
      R"("commission":1990},{"email_mask":"\u4e2d***","created_at":"5","paid":0,"commission":0}]})");
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(total, 57);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].emailMask, L"a***@x.example");
  EXPECT_EQ(rows[0].createdAt, 1749988800);
  EXPECT_TRUE(rows[0].paid);
  EXPECT_EQ(rows[0].commission, 1990);
  EXPECT_EQ(rows[1].emailMask, L"中***");
  EXPECT_EQ(rows[1].createdAt, 5);
  EXPECT_FALSE(rows[1].paid);
  EXPECT_EQ(rows[1].commission, 0);
  EXPECT_EQ(Sent(), Texts{SignedGet("user/tvn_invite/referrals?page=1")});
  EXPECT_EQ(error, L"");
}

TEST_F(Referrals, APageBelow1AsksForPage1) {
  for (const std::int32_t page : {0, -1, INT32_MIN}) {
    machine.http.Forget();
    Answer("{}");
    EXPECT_TRUE(Fetch(page));
    EXPECT_EQ(Paths(), Texts{"GET user/tvn_invite/referrals?page=1"});
  }
}

TEST_F(Referrals, OtherPagesAreAskedForInDecimal) {
  Answer("{}", "2");
  EXPECT_TRUE(Fetch(2));
  Answer("{}", "2147483647");
  EXPECT_TRUE(Fetch(INT32_MAX));
}

TEST_F(Referrals, WithoutDataTheListIsEmptyAndTheTotalIsThePanels) {
  Answer(R"({"total":3})");
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(total, 3);
  EXPECT_TRUE(rows.empty());
}

TEST_F(Referrals, InAnEnvelopeAreReadAsWell) {
  Answer(
      R"({"status":"success","data":{"total":1,"data":[{"email_mask":"m","paid":1}]},"error":null})");
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(total, 1);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].emailMask, L"m");
  EXPECT_TRUE(rows[0].paid);
}

TEST_F(Referrals, EmptyElementsAreRowsToo) {
  Answer(R"({"data":[{},{}]})");
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(rows.size(), 2u);
  EXPECT_EQ(total, 0);
}

TEST_F(Referrals, SignedOutNothingIsAskedAndTheOutputsAreEmpty) {
  SignOut();
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"请先登录");
  EXPECT_TRUE(rows.empty());
  EXPECT_EQ(total, 0);
  EXPECT_EQ(machine.http.Lines(), Texts());
}

TEST_F(Referrals, AFailedRequestTellsTheTransportsTextAndEmptiesTheOutputs) {
  OnGet("user/tvn_invite/referrals?page=1", Refusal(404, R"({"total":3,"message":"no"})"));
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板 HTTP 404");
  EXPECT_TRUE(rows.empty());
  EXPECT_EQ(total, 0);
}

}  // namespace
}  // namespace vpn
