// The account's state as the panel tells it.
#include <string>

#include "tests/unit/account/xboard_test.h"

namespace vpn {
namespace {

class Account : public XboardTest {
 protected:
  void SetUp() override {
    XboardTest::SetUp();
    machine.clock.SetDate(2025, 6, 15, 12, 0, 0);  // second 1749988800
  }
  // Reads an account that has no uuid, so that no nodes are asked for.
  AccountSession Fetch(const std::string& fields) {
    OnGet("user/getSubscribe", R"({"data":{)" + fields + "}}");
    AccountSession session;
    EXPECT_TRUE(panel().fetchAccount(session, error));
    EXPECT_EQ(error, L"");
    return session;
  }

  const std::string kPath = "user/getSubscribe";
};

TEST_F(Account, IsAskedForWithTheCredential) {
  (void)Fetch("");
  EXPECT_EQ(Sent(), Texts{SignedGet("user/getSubscribe")});
}

TEST_F(Account, SignedOutNothingIsAskedAndTheSessionStays) {
  SignOut();
  AccountSession session;
  session.planName = L"earlier";
  EXPECT_FALSE(panel().fetchAccount(session, error));
  EXPECT_EQ(error, L"请先登录");
  EXPECT_EQ(session.planName, L"earlier");
  EXPECT_EQ(machine.http.Lines(), Texts());
}

TEST_F(Account, AFailedRequestLeavesTheSessionAndTellsTheTransportsText) {
  const std::pair<sim::HttpAnswer, const wchar_t*> rows[] = {
      {Refusal(401, R"({"message":"x"})"), L"面板 HTTP 401"},
      {Refusal(403, R"({"message":"x"})"), L"面板 HTTP 403"},
      {Refusal(500), L"面板 HTTP 500"},
      {Unreachable(12002), L"连接面板超时。请检查网络，或稍后再试。"},
      {Unreachable(12007), L"无法解析面板域名。请检查网络或 DNS。"}};
  for (const auto& [answer, text] : rows) {
    OnGet(kPath, answer);
    AccountSession session;
    session.planName = L"earlier";
    session.nodes.resize(2);
    error = L"earlier";
    EXPECT_FALSE(panel().fetchAccount(session, error));
    EXPECT_EQ(error, text);
    EXPECT_EQ(session.planName, L"earlier");
    EXPECT_EQ(session.nodes.size(), 2u);
    EXPECT_FALSE(session.loggedIn);
  }
}

TEST_F(Account, FillsEveryField) {
  const AccountSession session =
      Fetch(R"("email":"me@example.com","expired_at":1803945599,"device_limit":4,)"
            R"("transfer_enable":107374182400,"u":1000,"d":2345,)"
            R"("plan_id":7,"plan":{"id":9,"name":"\u6807\u51c6\u7248","device_limit":3})");
  EXPECT_TRUE(session.loggedIn);
  EXPECT_FALSE(session.expired);
  EXPECT_TRUE(session.hasPlan);
  EXPECT_EQ(session.deviceLimit, 4);
  EXPECT_EQ(session.deviceUsed, 0);
  EXPECT_EQ(session.email, L"me@example.com");
  EXPECT_EQ(session.planName, L"标准版");
  EXPECT_EQ(session.planId, 7);
  EXPECT_EQ(session.expiryDate, L"2027-03-01");
  EXPECT_EQ(session.expiresAt, 1803945599);
  EXPECT_EQ(session.transferEnable, 107374182400);
  EXPECT_EQ(session.transferUsed, 3345);
  EXPECT_TRUE(session.nodes.empty());
}

TEST_F(Account, AnEmptyReplyEmptiesEveryFieldOfAnEarlierOne) {
  OnGet(kPath, R"({"data":{}})");
  AccountSession session;
  session.expired = session.hasPlan = true;
  session.deviceLimit = session.deviceUsed = session.planId = 5;
  session.expiresAt = session.transferEnable = session.transferUsed = 5;
  session.email = session.planName = session.expiryDate = L"earlier";
  session.nodes.resize(2);
  EXPECT_TRUE(panel().fetchAccount(session, error));
  EXPECT_TRUE(session.loggedIn);
  EXPECT_FALSE(session.expired || session.hasPlan);
  EXPECT_EQ(session.deviceLimit + session.deviceUsed + session.planId, 0);
  EXPECT_EQ(session.expiresAt + session.transferEnable + session.transferUsed, 0);
  EXPECT_EQ(session.email, L"user@example.com");
  EXPECT_EQ(session.planName + session.expiryDate, L"");
  EXPECT_TRUE(session.nodes.empty());
}

TEST_F(Account, AnEmptyOrMissingAddressFallsBackOnTheSessionFiles) {
  EXPECT_EQ(Fetch(R"("email":"")").email, L"user@example.com");
  EXPECT_EQ(Fetch(R"("email":null)").email, L"user@example.com");
}

TEST_F(Account, ThePlanIdOfTheDataComesBeforeThePlansOwn) {
  EXPECT_EQ(Fetch(R"("plan_id":0,"plan":{"id":5})").planId, 0);
  EXPECT_FALSE(Fetch(R"("plan_id":0,"plan":{"id":5})").hasPlan);
  EXPECT_EQ(Fetch(R"("plan_id":null,"plan":{"id":5})").planId, 0);
  EXPECT_EQ(Fetch(R"("plan":{"id":5})").planId, 5);
  EXPECT_TRUE(Fetch(R"("plan":{"id":5})").hasPlan);
  EXPECT_FALSE(Fetch(R"("plan_id":-1)").hasPlan);
  EXPECT_TRUE(Fetch(R"("plan_id":"3")").hasPlan);
}

TEST_F(Account, APlanIdBeyond32BitsIsConvertedPlainly) {
  EXPECT_EQ(Fetch(R"("plan_id":4294967303)").planId, 7);
  EXPECT_FALSE(Fetch(R"("plan_id":4294967296)").hasPlan);
  EXPECT_FALSE(Fetch(R"("plan_id":2147483648)").hasPlan);
}

TEST_F(Account, TheDeviceLimitOfThePlanServesWhereTheAccountsIs0OrLess) {
  EXPECT_EQ(Fetch(R"("device_limit":0,"plan":{"device_limit":3})").deviceLimit, 3);
  EXPECT_EQ(Fetch(R"("device_limit":-1,"plan":{"device_limit":3})").deviceLimit, 3);
  EXPECT_EQ(Fetch(R"("device_limit":null,"plan":{"device_limit":1})").deviceLimit, 1);
  EXPECT_EQ(Fetch(R"("device_limit":2,"plan":{"device_limit":3})").deviceLimit, 2);
  EXPECT_EQ(Fetch(R"("device_limit":-1,"plan":{"device_limit":0})").deviceLimit, -1);
  EXPECT_EQ(Fetch(R"("device_limit":0,"plan":{"device_limit":-3})").deviceLimit, 0);
}

// The first key of the text counts, so a limit that only the plan has is found in the account.
TEST_F(Account, ADeviceLimitThatOnlyThePlanHasIsFound) {
  EXPECT_EQ(Fetch(R"("plan":{"device_limit":3})").deviceLimit, 3);
}

TEST_F(Account, ThePlansNameComesBeforeThePlanNameOfTheData) {
  EXPECT_EQ(Fetch(R"("plan_name":"B","plan":{"name":"A"})").planName, L"A");
  EXPECT_EQ(Fetch(R"("plan_name":"B","plan":{"name":""})").planName, L"B");
  EXPECT_EQ(Fetch(R"("plan_name":"B","plan":null)").planName, L"B");
  EXPECT_EQ(Fetch(R"("plan_name":"B")").planName, L"B");
  EXPECT_EQ(Fetch("").planName, L"");
}

TEST_F(Account, TrafficUsedIsTheSumOfBothDirections) {
  EXPECT_EQ(Fetch(R"("u":5)").transferUsed, 5);
  EXPECT_EQ(Fetch(R"("d":"6")").transferUsed, 6);
  EXPECT_EQ(Fetch(R"("u":9223372036854775807,"d":1)").transferUsed, INT64_MIN);
}

TEST_F(Account, IsExpiredFromTheSecondAfterItsLastOn) {
  EXPECT_FALSE(Fetch(R"("plan_id":1,"expired_at":1749988801)").expired);
  EXPECT_FALSE(Fetch(R"("plan_id":1,"expired_at":1749988800)").expired);
  EXPECT_TRUE(Fetch(R"("plan_id":1,"expired_at":1749988799)").expired);
}

TEST_F(Account, APlanWithoutAnExpiryNeverExpires) {
  for (const char* value : {"0", "null", "-1749988800", "5"}) {
    const AccountSession session = Fetch(R"("plan_id":1,"expired_at":)" + std::string(value));
    EXPECT_FALSE(session.expired) << value;
    EXPECT_EQ(session.expiryDate, L"") << value;
  }
}

TEST_F(Account, WithoutAPlanNothingExpires) {
  const AccountSession session = Fetch(R"("expired_at":1000000000)");
  EXPECT_FALSE(session.expired);
  EXPECT_EQ(session.expiresAt, 1000000000);
  EXPECT_EQ(session.expiryDate, L"2001-09-09");
}

TEST_F(Account, TheExpiryDateIsOfUtcAndNotOfThePanelsZone) {
  // 07:59:59 on 2 March in Shanghai
  EXPECT_EQ(Fetch(R"("expired_at":1803945599)").expiryDate, L"2027-03-01");
}

TEST_F(Account, AnExpiryBeyondTheCalendarHasNoDateText) {
  const AccountSession session = Fetch(R"("plan_id":1,"expired_at":"1700000000000")");
  EXPECT_EQ(session.expiresAt, 1700000000000);
  EXPECT_EQ(session.expiryDate, L"");
  EXPECT_FALSE(session.expired);
}

TEST_F(Account, AWebPageIsAnAccountWithoutAPlan) {
  OnGet(kPath, "<!DOCTYPE html><html><body>hello</body></html>");
  AccountSession session;
  EXPECT_TRUE(panel().fetchAccount(session, error));
  EXPECT_TRUE(session.loggedIn);
  EXPECT_FALSE(session.hasPlan);
  EXPECT_EQ(session.email, L"user@example.com");
  EXPECT_EQ(Paths(), Texts{"GET user/getSubscribe"});
}

TEST_F(Account, AnEmptyBodyIsAnAccountWithoutAPlan) {
  OnGet(kPath, "");
  AccountSession session;
  EXPECT_TRUE(panel().fetchAccount(session, error));
  EXPECT_FALSE(session.hasPlan);
}

TEST_F(Account, APanelsOrdinaryReplyIsRead) {
  OnGet(
      kPath,
      R"({"status":"success","message":"\u64cd\u4f5c\u6210\u529f","data":{"plan_id":2,)"
      R"("token":"0123abcd","expired_at":null,"u":0,"d":1073741824,"transfer_enable":107374182400,)"
      R"("email":"me@example.com","uuid":"","device_limit":null,"speed_limit":null,)"
      R"("next_reset_at":1752537600,"plan":{"id":2,"group_id":1,"transfer_enable":100,)"
      R"("name":"\u6807\u51c6\u7248","device_limit":5,"prices":{"monthly":19.9},)"
      R"("content":"[{\"feature\":\"\\u4e0d\\u9650\",\"support\":true}]"},)"
      R"("subscribe_url":"https:\/\/panel.example\/s\/0123abcd","reset_day":30},"error":null})");
  AccountSession session;
  EXPECT_TRUE(panel().fetchAccount(session, error));
  EXPECT_TRUE(session.hasPlan);
  EXPECT_EQ(session.planId, 2);
  EXPECT_EQ(session.planName, L"标准版");
  EXPECT_EQ(session.deviceLimit, 5);
  EXPECT_EQ(session.transferEnable, 107374182400);
  EXPECT_EQ(session.transferUsed, 1073741824);
  EXPECT_EQ(session.expiresAt, 0);
}

TEST_F(Account, WithoutAPlanThePanelSendsANullWhichIsNone) {
  const AccountSession session = Fetch(R"("plan_id":null,"uuid":"u","token":"t","plan":null)");
  EXPECT_FALSE(session.hasPlan);
  EXPECT_EQ(session.planName, L"");
}

// Each half of the pair is decoded alone, and neither is valid UTF-8 by itself.
TEST_F(Account, APictureInAPlansNameBecomesReplacementCharacters) {
  const std::wstring name = Fetch(R"("plan":{"id":1,"name":"\ud83d\ude80 \u6807\u51c6"})").planName;
  ASSERT_GT(name.size(), 3u);
  EXPECT_EQ(name.substr(name.size() - 3), L" 标准");
  EXPECT_EQ(name.find_first_not_of(L'\xFFFD'), name.size() - 3);
}

TEST_F(Account, StrayBracesInThePlansTextDoLittleHarm) {
  EXPECT_EQ(Fetch(R"("plan":{"id":1,"name":"A","content":"a { b { c"},"plan_name":"B")").planName,
            L"A");
  // A closing one ends the plan early, which costs what stands behind the text.
  const AccountSession session =
      Fetch(R"("device_limit":0,"plan":{"id":1,"name":"A","content":"}","device_limit":3})");
  EXPECT_EQ(session.planName, L"A");
  EXPECT_EQ(session.deviceLimit, 0);
}

TEST_F(Account, ChangesNothingInTheObjectOrOnDisk) {
  (void)Fetch(R"("email":"other@example.com")");
  EXPECT_EQ(Read<Email>(panel()), L"user@example.com");
  EXPECT_EQ(machine.files.Read(sessionPath),
            "{\"email\":\"user@example.com\",\"auth_data\":\"Bearer abc\"}\n");
}

}  // namespace
}  // namespace vpn
