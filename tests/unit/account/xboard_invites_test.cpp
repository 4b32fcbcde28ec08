// The user's invite code and link, and who came through it.
#include <string>
#include <vector>

#include "tests/unit/account/xboard_test.h"

namespace vpn {
namespace {

class Invite : public XboardTest {
 protected:
  bool Fetch() { return panel().fetchInvite(info, error); }
  // The link for the code "c" of a panel at `api` with this base of invite links.
  std::wstring LinkOf(const wchar_t* api, const wchar_t* inviteBase) {
    machine.http.Handle([](const sim::HttpRequestRecord&) -> std::optional<sim::HttpAnswer> {
      return Ok(R"({"data":{"codes":[{"code":"c"}],"stat":[]}})");
    });
    Build(api, inviteBase);
    EXPECT_TRUE(Fetch());
    return info.link;
  }

  const std::string kFetch = "user/invite/fetch";
  const std::string kSave = "user/invite/save";
  const std::string kInfo = "user/info";
  InviteInfo info = {L"earlier", L"earlier", 9, 9, 9, 9, 9};
};

TEST_F(Invite, FillsEveryField) {
  OnGet(kFetch, R"({"data":{"codes":[{"id":1,"code":"AbC12345","status":0}],"stat":[1,2,3,4,5]}})");
  OnGet(kInfo, R"({"data":{"email":"user@example.com","balance":990,"commission_balance":5}})");
  error = L"earlier";
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(info.code, L"AbC12345");
  EXPECT_EQ(info.link, L"https://panel.example/i/?c=AbC12345");
  EXPECT_EQ(info.stat0, 1);
  EXPECT_EQ(info.stat1, 2);
  EXPECT_EQ(info.stat2, 3);
  EXPECT_EQ(info.stat3, 4);
  EXPECT_EQ(info.balance, 990);
  EXPECT_EQ(error, L"earlier");
  EXPECT_EQ(Sent(), (Texts{SignedGet(kFetch), SignedGet(kInfo)}));
}

TEST_F(Invite, SignedOutNothingIsAskedAndTheRecordIsEmpty) {
  SignOut();
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"请先登录");
  EXPECT_EQ(info.code + info.link, L"");
  EXPECT_EQ(info.stat0 + info.stat3, 0);
  EXPECT_EQ(info.stat1 + info.stat2 + info.balance, 0);
  EXPECT_EQ(machine.http.Lines(), Texts());
}

TEST_F(Invite, AFailedFirstRequestEndsItWithTheTransportsText) {
  OnGet(kFetch, Refusal(403, R"({"message":"no","codes":[{"code":"c"}]})"));
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板 HTTP 403");
  EXPECT_EQ(info.code, L"");
  EXPECT_EQ(machine.http.Lines().size(), 1u);
}

TEST_F(Invite, OfTwoCodesTheFirstThatIsNotEmptyIsShown) {
  OnGet(kFetch, R"({"codes":[{"code":"first"},{"code":"second"}],"stat":[]})");
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(info.code, L"first");
  OnGet(kFetch, R"({"codes":[{"code":""},{"id":3},{"code":"second"}],"stat":[]})");
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(info.code, L"second");
}

TEST_F(Invite, AUserWithoutACodeGetsOneMade) {
  OnGet(kFetch, R"({"data":{"codes":[],"stat":[1,1,1,1]}})");
  OnGet(kSave, R"({"data":true})");
  OnGet(kFetch, R"({"data":{"codes":[{"code":"made"}],"stat":[2,2,2,2]}})");
  OnGet(kInfo, "{}");
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(info.code, L"made");
  EXPECT_EQ(info.stat0, 2);
  EXPECT_EQ(Sent(),
            (Texts{SignedGet(kFetch), SignedGet(kSave), SignedGet(kFetch), SignedGet(kInfo)}));
}

TEST_F(Invite, WhetherTheMakingWorkedIsSeenByTheSecondReadingOnly) {
  OnGet(kFetch, R"({"data":{"codes":[]}})");
  OnGet(kSave, Refusal(500, R"({"message":"no"})"));
  OnGet(kFetch, R"({"data":{"codes":[{"code":"made"}]}})");
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(info.code, L"made");
  EXPECT_EQ(error, L"");
}

TEST_F(Invite, NoCodeAfterThatIsAFailure) {
  const sim::HttpAnswer seconds[] = {Ok(R"({"data":{"codes":[]}})"), Unreachable(12002),
                                     Refusal(500, R"({"codes":[{"code":"c"}]})")};
  for (const sim::HttpAnswer& second : seconds) {
    machine.http.Forget();
    OnGet(kFetch, R"({"data":{"codes":[],"stat":[1,2]}})");
    OnGet(kFetch, second);
    EXPECT_FALSE(Fetch());
    EXPECT_EQ(error, L"面板没有返回邀请码");
    EXPECT_EQ(info.code + info.link, L"");
    EXPECT_EQ(info.stat0, 0);
    EXPECT_EQ(Paths(),
              (Texts{"GET user/invite/fetch", "GET user/invite/save", "GET user/invite/fetch"}));
  }
}

TEST_F(Invite, AWebPageHasNoCode) {
  machine.http.On("GET", kApi + kFetch, Ok("<html></html>"));
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板没有返回邀请码");
}

TEST_F(Invite, MissingStatisticsStay0) {
  const auto stat0To3 = [&](const std::string& stat) {
    OnGet(kFetch, R"({"codes":[{"code":"c"}])" + stat + "}");
    EXPECT_TRUE(Fetch());
    return std::vector<std::int64_t>{info.stat0, info.stat1, info.stat2, info.stat3};
  };
  using Numbers = std::vector<std::int64_t>;
  EXPECT_EQ(stat0To3(R"(,"stat":[7,8])"), (Numbers{7, 8, 0, 0}));
  EXPECT_EQ(stat0To3(R"(,"stat":[])"), (Numbers{0, 0, 0, 0}));
  EXPECT_EQ(stat0To3(""), (Numbers{0, 0, 0, 0}));
  EXPECT_EQ(stat0To3(R"(,"stat":[1,2,10.75,-4,5])"), (Numbers{1, 2, 10, -4}));
  EXPECT_EQ(stat0To3(R"(,"stat":[4294967297,4294967297,4294967297,4294967297])"),
            (Numbers{1, 4294967297, 4294967297, 1}));
}

TEST_F(Invite, ABalanceThatCanNotBeReadIsNoFailure) {
  for (const sim::HttpAnswer& account :
       {Refusal(500, R"({"data":{"balance":5}})"), Unreachable(12002), Ok("{}"), Ok("")}) {
    OnGet(kFetch, R"({"codes":[{"code":"c"}]})");
    OnGet(kInfo, account);
    EXPECT_TRUE(Fetch());
    EXPECT_EQ(info.balance, 0);
    EXPECT_EQ(error, L"");
  }
}

TEST_F(Invite, TheCodeStandsInTheLinkAsItIs) {
  OnGet(kFetch, R"({"codes":[{"code":"a b&\u4e2d\/"}]})");
  EXPECT_TRUE(Fetch());
  EXPECT_EQ(info.link, L"https://panel.example/i/?c=a b&中/");
}

TEST_F(Invite, TheLinksBaseIsThePanelsSiteWithoutTheApiLabelAndPath) {
  EXPECT_EQ(LinkOf(L"https://api.panel.example/sub/dir", L""), L"https://panel.example/i/?c=c");
  EXPECT_EQ(LinkOf(L"https://api.panel.example", L""), L"https://panel.example/i/?c=c");
  EXPECT_EQ(LinkOf(L"http://api.panel.example:8080/x", L""), L"http://panel.example:8080/i/?c=c");
  EXPECT_EQ(LinkOf(L"https://www.panel.example/x", L""), L"https://www.panel.example/i/?c=c");
  EXPECT_EQ(LinkOf(L"https://apis.panel.example", L""), L"https://apis.panel.example/i/?c=c");
}

TEST_F(Invite, OnlyTheFirstApiLabelGoes) {
  EXPECT_EQ(LinkOf(L"https://api.api.example", L""), L"https://api.example/i/?c=c");
  EXPECT_EQ(LinkOf(L"https://panel.example/?u=http://api.x", L""), L"https://panel.example/i/?c=c");
}

TEST_F(Invite, ABackslashBehindTheHostStays) {
  EXPECT_EQ(LinkOf(L"https://panel.example\\x", L""), L"https://panel.example\\x/i/?c=c");
  EXPECT_EQ(LinkOf(L"https://panel.example\\/x", L""), L"https://panel.example/i/?c=c");
}

// Such an address can't be requested, so the base is all that can be asked for.
TEST_F(Invite, AnApiBaseWithoutASchemeCanNotBeAsked) {
  Build(L"api.panel.example/x/", L"");
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板地址无效");
}

TEST_F(Invite, AnInviteBaseKeepsItsPathAndLosesItsEndSlashes) {
  EXPECT_EQ(LinkOf(L"https://api.panel.example", L"https://api.invite.example/a/b//\\"),
            L"https://api.invite.example/a/b/i/?c=c");
  EXPECT_EQ(LinkOf(L"https://api.panel.example", L"invite.example"), L"invite.example/i/?c=c");
}

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
