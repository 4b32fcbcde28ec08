// The user's invite code and link.
#include <string>
#include <vector>

#include "tests/unit/account/xboard_test.h"

namespace vpn {

struct LinkBase {
  friend std::wstring (XboardControlPlane::*MemberOf(LinkBase))() const;
};
template <std::wstring (XboardControlPlane::*Member)() const>
struct ExposeLinkBase {
  friend std::wstring (XboardControlPlane::*MemberOf(LinkBase))() const { return Member; }
};
template struct ExposeLinkBase<&XboardControlPlane::inviteLinkBase>;

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

TEST_F(Invite, AnApiBaseWithoutASchemeCanNotBeAsked) {
  Build(L"api.panel.example/x/", L"");
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板地址无效");
}

// No request gets that far with such an address, so the base is read as it is made.
TEST_F(Invite, AnApiBaseWithoutASchemeIsNotCut) {
  Build(L"api.panel.example/x/", L"");
  EXPECT_EQ((panel().*MemberOf(LinkBase()))(), L"api.panel.example/x");
}

TEST_F(Invite, AnInviteBaseKeepsItsPathAndLosesItsEndSlashes) {
  EXPECT_EQ(LinkOf(L"https://api.panel.example", L"https://api.invite.example/a/b//\\"),
            L"https://api.invite.example/a/b/i/?c=c");
  EXPECT_EQ(LinkOf(L"https://api.panel.example", L"invite.example"), L"invite.example/i/?c=c");
}

}  // namespace
}  // namespace vpn
