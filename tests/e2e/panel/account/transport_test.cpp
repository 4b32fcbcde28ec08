// What the transport says, from real causes. Where Wine's WinHTTP gives another code than that of
// Windows, both stand here; the text is what the user reads on either.
#include "src/panel/panel_client.h"
#include "tests/e2e/panel/account/account_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr wchar_t kConfigPath[] = L"/api/v1/guest/comm/config";

class Transport : public AccountTest {
 protected:
  bool Get(const std::wstring& url) {
    response = "untouched";
    error.clear();
    status = 77;
    const vpn::PanelReply reply = vpn::PanelClient{url}.get(L"");
    status = reply.status;
    error = reply.error;
    response = reply.answered ? reply.body : response;
    return reply.ok();
  }

  void ExpectFailure(const std::wstring& url, DWORD code, const wchar_t* text) {
    EXPECT_FALSE(Get(url));
    EXPECT_EQ(status, code);
    EXPECT_EQ(error, text);
    EXPECT_EQ(response, "untouched");
  }

  void Tell(const char* deed) {
    panel.Behave({{"path", "/api/v1/guest/comm/config"}, {"do", deed}, {"times", 1}});
  }

  std::string response;
  DWORD status = 0;
};

TEST_F(Transport, ListenerThatNeverAnswersIsATimeOut) {
  ExpectFailure(standins::ToWide(panel.deaf()), 12002, L"连接面板超时。请检查网络，或稍后再试。");
}

TEST_F(Transport, UnknownName) {
  ExpectFailure(L"http://no-such-panel.invalid/x", 12007, L"无法解析面板域名。请检查网络或 DNS。");
}

TEST_F(Transport, PortWhereNobodyListens) {
  ExpectFailure(standins::ToWide(panel.nowhere()), 12029, L"无法连上面板服务器。");
}

TEST_F(Transport, PanelThatHasGoneAwayAndComesBack) {
  ASSERT_TRUE(Get(apiBase + kConfigPath));
  panel.SetPort("http", false);
  ExpectFailure(apiBase + kConfigPath, 12029, L"无法连上面板服务器。");
  panel.SetPort("http", true);
  EXPECT_TRUE(Get(apiBase + kConfigPath));
  EXPECT_EQ(status, 200U);
}

// Wine 8 knows no 12030: it hands on Winsock's own code, which the product has no text for.
TEST_F(Transport, ResetInsteadOfAnAnswer) {
  Tell("reset");
  ExpectFailure(apiBase + kConfigPath, OnWine() ? 10054 : 12030,
                OnWine() ? L"无法连接面板。" : L"与面板的连接被中断。");
}

// Wine 8 gives 12152 for whatever ends in front of the status line.
TEST_F(Transport, EndOfTheConnectionInsteadOfAnAnswer) {
  Tell("close");
  ExpectFailure(apiBase + kConfigPath, OnWine() ? 12152 : 12030,
                OnWine() ? L"面板返回了无法识别的内容。" : L"与面板的连接被中断。");
}

TEST_F(Transport, AnswerThatIsNoHttp) {
  Tell("garbage");
  ExpectFailure(apiBase + kConfigPath, 12152, L"面板返回了无法识别的内容。");
}

// Wine 8 gives 12157 for whatever goes wrong with TLS, Windows 12175 for a certificate.
TEST_F(Transport, CertificateThatNobodyTrusts) {
  panel.SetTls("untrusted");
  ExpectFailure(standins::ToWide(panel.https()) + kConfigPath, OnWine() ? 12157 : 12175,
                L"面板安全连接失败（证书或加密通道）。");
  EXPECT_TRUE(panel.Requests().empty());
}

TEST_F(Transport, CertificateForAnotherName) {
  ExpectFailure(L"https://127.0.0.1:" + std::to_wstring(panel.httpsPort()) + kConfigPath,
                OnWine() ? 12157 : 12175, L"面板安全连接失败（证书或加密通道）。");
}

TEST_F(Transport, RefusedHandshake) {
  panel.SetTls("refused");
  ExpectFailure(standins::ToWide(panel.https()) + kConfigPath, 12157,
                L"面板安全连接失败（证书或加密通道）。");
}

TEST_F(Transport, TrustedCertificateIsServed) {
  EXPECT_TRUE(Get(standins::ToWide(panel.https()) + kConfigPath)) << standins::ToUtf8(error);
  EXPECT_EQ(status, 200U);
  EXPECT_EQ(response.substr(0, 20), R"({"status":"success",)");
  EXPECT_EQ(panel.Requests().at(0).listener, "https");
}

TEST_F(Transport, AddressWithoutASchemeIsRefusedWithoutACall) {
  EXPECT_FALSE(Get(L"127.0.0.1/api"));
  EXPECT_EQ(status, 0U);
  EXPECT_EQ(error, L"面板地址无效");
  EXPECT_EQ(response, "untouched");
}

TEST_F(Transport, RedirectIsFollowedByThePlatform) {
  panel.Behave({{"path", "/moved"}, {"do", "redirect"}, {"location", "/api/v1/guest/comm/config"}});
  EXPECT_TRUE(Get(apiBase + L"/moved"));
  EXPECT_EQ(status, 200U);
  ExpectLines(panel.Sequence(), {"GET /moved", "GET /api/v1/guest/comm/config"});
}

// From TLS to plain HTTP the platform doesn't go.
TEST_F(Transport, RedirectOutOfTls) {
  panel.Behave({{"path", "/moved"}, {"do", "redirect"}, {"location", panel.http() + "/there"}});
  ExpectFailure(standins::ToWide(panel.https()) + L"/moved", 12156, L"无法连接面板。");
  ExpectLines(panel.Sequence(), {"GET /moved"});
}

TEST_F(Transport, RedirectInACircle) {
  panel.Behave({{"path", "/moved"}, {"do", "redirect"}, {"location", "/moved"}});
  ExpectFailure(apiBase + L"/moved", 12156, L"无法连接面板。");
}

TEST_F(Transport, StatusThatThePlatformDoesNotFollowIsASuccessWithItsBody) {
  panel.Answer("/choices", 300, "one or the other");
  EXPECT_TRUE(Get(apiBase + L"/choices"));
  EXPECT_EQ(status, 300U);
  EXPECT_EQ(response, "one or the other");
  EXPECT_EQ(error, L"");
}

TEST_F(Transport, ChunkedAnswerIsPutTogether) {
  ASSERT_TRUE(Get(apiBase + kConfigPath));
  const std::string whole = response;
  Tell("chunked");
  EXPECT_TRUE(Get(apiBase + kConfigPath));
  EXPECT_EQ(response, whole);
  EXPECT_EQ(response.size(), 308U);
}

TEST_F(Transport, AnswerOfTenMebibytesComesWhole) {
  panel.Behave(
      {{"path", "/long"}, {"do", "repeat"}, {"body", "0123456789abcdef"}, {"size", 10485760}});
  EXPECT_TRUE(Get(apiBase + L"/long"));
  ASSERT_EQ(response.size(), 10485760U);
  for (std::size_t i = 0; i < response.size(); i += 16) {
    ASSERT_EQ(response.compare(i, 16, "0123456789abcdef"), 0) << i;
  }
}

// Two halves make the 308 bytes.
TEST_F(Transport, AnswerThatIsCutShortIsASuccessWithWhatCame) {
  Tell("cut");
  EXPECT_TRUE(Get(apiBase + kConfigPath));
  EXPECT_EQ(response.size(), 154U);
  EXPECT_EQ(error, L"");
}

TEST_F(Transport, ResetInTheBodyIsASuccessWithWhatCame) {
  Tell("reset-in-body");
  EXPECT_TRUE(Get(apiBase + kConfigPath));
  EXPECT_EQ(response.size(), 154U);
}

TEST_F(Transport, WebPageIsAnAnswerLikeAnyOther) {
  Tell("html");
  EXPECT_TRUE(Get(apiBase + kConfigPath));
  EXPECT_EQ(response.substr(0, 15), "<!DOCTYPE html>");
}

}  // namespace
}  // namespace e2e
