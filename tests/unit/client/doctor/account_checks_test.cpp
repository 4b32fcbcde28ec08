#include <winhttp.h>

#include "client/account/masked.h"
#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

class AccountChecksTest : public unit::DoctorTest {
 protected:
  void PutPanel() {
    machine.files.Put(InRuntime(L"panel.json"), R"({"apiBase":"https://panel.example:8443/"})");
  }
  void PanelAnswers(sim::HttpAnswer answer, std::optional<std::int64_t> behind) {
    machine.http.On("GET", "https://panel.example:8443/api/v1/guest/comm/config", answer);
    machine.http.On("HEAD", "https://panel.example:8443/", {.dateBehind = behind});
  }
};

TEST_F(AccountChecksTest, AnAccountWithItsPlanAndNodes) {
  ExpectGood(CheckAccount(patient), L"so***@mail.example, plan until 2999-12-31, 1 node");
}

TEST_F(AccountChecksTest, AnAccountThatIsNotThere) {
  machine.files.Remove(InRuntime(L"session.json"));
  ExpectProblem(CheckAccount(patient), L"not logged in", L"sign in");
}

TEST_F(AccountChecksTest, DamagedFilesAreNoGreenMark) {
  for (const char* text : {"", "{", "\xFF\xFE", "[]", R"({"email":5})"}) {
    machine.files.Put(InRuntime(L"account.json"), text);
    EXPECT_EQ(static_cast<int>(CheckAccount(patient).verdict), static_cast<int>(Verdict::kProblem))
        << text;
  }
  PutAccount();
  machine.files.SetLocked(InRuntime(L"account.json"), true);
  ExpectProblem(CheckAccount(patient), L"cannot read " + InRuntime(L"account.json"),
                L"put account.json there");
}

TEST_F(AccountChecksTest, APanelThatRefusesTheAccount) {
  PutPanel();
  ExpectProblem(CheckAccount(patient), L"请先登录", L"sign in");
}

TEST_F(AccountChecksTest, APanelAccountWithoutAPlan) {
  PutPanel();
  machine.files.Put(InRuntime(L"session.json"), R"({"email":"a@b.example","auth_data":"x"})");
  machine.http.Handle([](const sim::HttpRequestRecord&) {
    return std::optional<sim::HttpAnswer>({.body = R"({"data":{"email":"a@b.example"}})"});
  });
  const Finding finding = CheckAccount(patient);
  EXPECT_EQ(static_cast<int>(finding.verdict), static_cast<int>(Verdict::kProblem));
  EXPECT_EQ(finding.text, L"a***@b.example, no plan, 0 nodes");
  EXPECT_EQ(finding.whatToDo, L"renew the plan, and see whether apiBase leads to a panel at all");
}

TEST_F(AccountChecksTest, NoPanel) {
  ExpectGood(CheckPanel(patient), L"none configured; the account is a file of this machine");
}

TEST_F(AccountChecksTest, ThePanelOfTheEnvironmentIsAskedWhenTheFileNamesNone) {
  machine.files.Put(InRuntime(L"panel.json"), "");
  machine.environment.Set(L"TAVRIN_XBOARD_URL", L"https://panel.example:8443");
  PanelAnswers({}, 0);
  ExpectGood(CheckPanel(patient), L"panel.example answers, and the clocks agree");
}

TEST_F(AccountChecksTest, APanelWithTheRightTime) {
  PutPanel();
  PanelAnswers({}, 60);
  ExpectGood(CheckPanel(patient), L"panel.example answers, and the clocks agree");
}

TEST_F(AccountChecksTest, APanelThatAnswersAnythingIsReachable) {
  PutPanel();
  PanelAnswers({.status = 404}, -60);
  ExpectGood(CheckPanel(patient), L"panel.example answers, and the clocks agree");
}

TEST_F(AccountChecksTest, AClockThatIsWrongByMoreThanAMinute) {
  PutPanel();
  PanelAnswers({}, 61);
  ExpectRemark(CheckPanel(patient), L"this machine's clock is 1 min ahead of panel.example",
               L"set the clock: certificates and the connection to the node depend on it");
  PanelAnswers({}, -7200);
  EXPECT_EQ(CheckPanel(patient).text, L"this machine's clock is 2 h 0 min behind panel.example");
}

TEST_F(AccountChecksTest, APanelThatDoesNotTellTheTime) {
  PutPanel();
  PanelAnswers({}, std::nullopt);
  ExpectRemark(CheckPanel(patient), L"panel.example answers, but not what time it is",
               L"compare this machine's clock with another one");
}

TEST_F(AccountChecksTest, APanelThatCantBeReached) {
  PutPanel();
  PanelAnswers({.sendCode = ERROR_WINHTTP_CANNOT_CONNECT}, 0);
  ExpectProblem(CheckPanel(patient), L"无法连上面板服务器。",
                L"try again, or from another network: the panel's server, or something on the way, "
                L"refuses the connection or breaks it off");
}

TEST_F(AccountChecksTest, ACertificateThatIsNotTrusted) {
  PutPanel();
  PanelAnswers({.sendCode = ERROR_WINHTTP_SECURE_FAILURE}, 0);
  ExpectProblem(CheckPanel(patient), L"面板安全连接失败（证书或加密通道）。",
                L"set the machine's clock; if it is right, the panel's certificate has run out, is "
                L"not trusted or is for another name");
}

TEST_F(AccountChecksTest, AnAddressThatIsNone) {
  machine.files.Put(InRuntime(L"panel.json"), R"({"apiBase":"panel"})");
  ExpectProblem(CheckPanel(patient), L"面板地址无效",
                L"correct apiBase in panel.json; it needs a scheme, https://, in front");
}

TEST_F(AccountChecksTest, EmailsAreMasked) {
  EXPECT_EQ(MaskedEmail(L"someone@mail.example"), L"so***@mail.example");
  EXPECT_EQ(MaskedEmail(L"ab@mail.example"), L"a***@mail.example");
  EXPECT_EQ(MaskedEmail(L"@mail.example"), L"***@mail.example");
  EXPECT_EQ(MaskedEmail(L"nobody"), L"***");
}

}  // namespace
}  // namespace vpn
