// What every status of 400 or more comes to: the number, whatever the body says, unless an
// operation reads the panel's message.
#include "src/panel/panel_client.h"
#include "tests/e2e/panel/account/account_test.h"

namespace e2e {
namespace {

struct StatusCase {
  int status;
  const wchar_t* text;
  const wchar_t* loginText;
  const wchar_t* registerText;
  const wchar_t* configText;
  const wchar_t* codeText;
  const wchar_t* resetText;
};

constexpr StatusCase kStatusCases[] = {
    {401, L"面板 HTTP 401", L"面板 HTTP 401（LOGIN 401）", L"面板 HTTP 401（REG 401）",
     L"面板 HTTP 401（CFG 401）", L"面板 HTTP 401（SEND 401）", L"面板 HTTP 401（RESET 401）"},
    {403, L"面板 HTTP 403", L"面板 HTTP 403（LOGIN 403）", L"面板 HTTP 403（REG 403）",
     L"面板 HTTP 403（CFG 403）", L"面板 HTTP 403（SEND 403）", L"面板 HTTP 403（RESET 403）"},
    {404, L"面板 HTTP 404", L"面板 HTTP 404（LOGIN 404）", L"面板 HTTP 404（REG 404）",
     L"面板 HTTP 404（CFG 404）", L"面板 HTTP 404（SEND 404）", L"面板 HTTP 404（RESET 404）"},
    {429, L"面板 HTTP 429", L"面板 HTTP 429（LOGIN 429）", L"面板 HTTP 429（REG 429）",
     L"面板 HTTP 429（CFG 429）", L"面板 HTTP 429（SEND 429）", L"面板 HTTP 429（RESET 429）"},
    {500, L"面板 HTTP 500", L"面板 HTTP 500（LOGIN 500）", L"面板 HTTP 500（REG 500）",
     L"面板 HTTP 500（CFG 500）", L"面板 HTTP 500（SEND 500）", L"面板 HTTP 500（RESET 500）"},
    {502, L"面板 HTTP 502", L"面板 HTTP 502（LOGIN 502）", L"面板 HTTP 502（REG 502）",
     L"面板 HTTP 502（CFG 502）", L"面板 HTTP 502（SEND 502）", L"面板 HTTP 502（RESET 502）"},
    {521, L"面板 HTTP 521", L"面板 HTTP 521（LOGIN 521）", L"面板 HTTP 521（REG 521）",
     L"面板 HTTP 521（CFG 521）", L"面板 HTTP 521（SEND 521）", L"面板 HTTP 521（RESET 521）"},
    {525, L"面板 HTTP 525", L"面板 HTTP 525（LOGIN 525）", L"面板 HTTP 525（REG 525）",
     L"面板 HTTP 525（CFG 525）", L"面板 HTTP 525（SEND 525）", L"面板 HTTP 525（RESET 525）"},
    {600, L"面板 HTTP 600", L"面板 HTTP 600（LOGIN 600）", L"面板 HTTP 600（REG 600）",
     L"面板 HTTP 600（CFG 600）", L"面板 HTTP 600（SEND 600）", L"面板 HTTP 600（RESET 600）"},
};

class Statuses : public AccountTest, public ::testing::WithParamInterface<StatusCase> {
 protected:
  void AnswerAll(const std::string& body) const { panel.Answer("*", GetParam().status, body); }
};

TEST_P(Statuses, TransportHandsOnNumberAndBody) {
  AnswerAll("a body");
  const vpn::PanelReply reply = vpn::PanelClient{apiBase + L"/any"}.get(L"");
  EXPECT_FALSE(reply.ok());
  EXPECT_EQ(reply.error, GetParam().text);
  EXPECT_EQ(reply.status, static_cast<DWORD>(GetParam().status));
  EXPECT_EQ(reply.body, "a body");
}

TEST_P(Statuses, SignedInOperationsSayTheNumberWhateverThePanelSays) {
  AnswerAll(R"({"message":"\u672a\u767b\u5f55"})");
  vpn::XboardControlPlane plane = SignedIn();
  vpn::AccountSession session;
  std::vector<vpn::PlanOption> plans;
  vpn::InviteInfo invite;
  std::vector<vpn::ReferralRow> rows;
  std::int32_t total = 0;
  bool paid = true;
  std::wstring texts[5];
  EXPECT_FALSE(plane.fetchAccount(session, texts[0]));
  EXPECT_FALSE(plane.fetchPlans(plans, texts[1]));
  EXPECT_FALSE(plane.fetchInvite(invite, texts[2]));
  EXPECT_FALSE(plane.fetchReferrals(1, rows, total, texts[3]));
  EXPECT_FALSE(plane.checkOrderPaid(L"1", paid, texts[4]));
  for (const std::wstring& text : texts) EXPECT_EQ(text, GetParam().text);
}

TEST_P(Statuses, PassportOperationsAddStepAndNumber) {
  AnswerAll("");
  vpn::XboardControlPlane plane = Restart();
  EXPECT_FALSE(plane.login(kTypedEmail, kTypedPassword, error));
  EXPECT_EQ(error, GetParam().loginText);
  error.clear();
  EXPECT_FALSE(plane.registerAccount(kTypedEmail, kTypedPassword, L"", L"", error));
  EXPECT_EQ(error, GetParam().registerText);
  vpn::RegisterConfig config;
  error.clear();
  EXPECT_FALSE(plane.fetchRegisterConfig(config, error));
  EXPECT_EQ(error, GetParam().configText);
  error.clear();
  EXPECT_FALSE(plane.sendEmailCode(kTypedEmail, error));
  EXPECT_EQ(error, GetParam().codeText);
  error.clear();
  EXPECT_FALSE(plane.resetPassword(kTypedEmail, L"123456", kTypedPassword, error));
  EXPECT_EQ(error, GetParam().resetText);
}

TEST_P(Statuses, OperationsThatReadTheMessageShowIt) {
  AnswerAll(R"({"message":"\u6682\u505c\u670d\u52a1"})");
  deviceApi = apiBase + L"/device";
  vpn::XboardControlPlane plane = SignedIn();
  vpn::PurchaseResult purchase;
  std::int32_t used = 0;
  std::int32_t limit = 0;
  EXPECT_FALSE(plane.purchasePlan(2, L"month_price", purchase, error));
  EXPECT_EQ(error, L"暂停服务");
  error.clear();
  EXPECT_FALSE(plane.claimDevice(L"machine-1", used, limit, error));
  EXPECT_EQ(error, L"暂停服务");
}

INSTANTIATE_TEST_SUITE_P(Each, Statuses, ::testing::ValuesIn(kStatusCases),
                         [](const ::testing::TestParamInfo<StatusCase>& row) {
                           return std::to_string(row.param.status);
                         });

}  // namespace
}  // namespace e2e
