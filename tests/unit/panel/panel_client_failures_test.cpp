// Every way in which a request fails before an answer comes, and the text that the user gets.
#include <string>
#include <utility>

#include "src/panel/panel_client.h"
#include "tests/unit/panel/panel_client_test.h"

namespace vpn {
namespace {

class HttpFailure : public HttpTest {
 protected:
  // Nothing is retried, and the response is the caller's own.
  void ExpectFailure(const wchar_t* text, DWORD code) {
    response = "earlier body";
    status = 777;
    EXPECT_FALSE(Get());
    EXPECT_EQ(error, text);
    EXPECT_EQ(status, code);
    EXPECT_EQ(response, "earlier body");
    EXPECT_EQ(machine.OpenHandles(), Texts());
  }
};

TEST_F(HttpFailure, AnAddressWithoutASchemeIsInvalidAtOnce) {
  EXPECT_FALSE(Get(L"panel.example/x"));
  EXPECT_EQ(error, L"面板地址无效");
  EXPECT_EQ(status, 0u);
  EXPECT_EQ(response, "earlier body");
  EXPECT_EQ(machine.calls.Names(), Texts{"WinHttpCrackUrl"});
}

TEST_F(HttpFailure, OtherAddressesThatThePlatformRefusesAreInvalid) {
  for (const wchar_t* address : {L"", L"ftp://panel.example/", L"http://", L"https:///x",
                                 L"http://panel.example:65536/", L"http:panel.example"}) {
    error.clear();
    EXPECT_FALSE(Get(address));
    EXPECT_EQ(error, L"面板地址无效");
    EXPECT_EQ(status, 0u);
  }
  EXPECT_EQ(machine.calls.Count("WinHttpConnect"), 0u);
}

TEST_F(HttpFailure, AHostMayHave255UnitsAndNoMore) {
  const std::wstring host(255, L'h');
  EXPECT_FALSE(Get(L"http://" + host + L"/"));
  EXPECT_EQ(error, L"无法连上面板服务器。");
  EXPECT_EQ(machine.http.Lines(), Texts{"GET http://" + std::string(255, 'h') + "/"});
  EXPECT_FALSE(Get(L"http://" + host + L"h/"));
  EXPECT_EQ(error, L"面板地址无效");
}

TEST_F(HttpFailure, PathAndQueryTogetherMayHave2047UnitsAndNoMore) {
  const std::wstring path = L"/" + std::wstring(1023, L'p') + L"?" + std::wstring(1022, L'q');
  EXPECT_FALSE(Get(L"http://h" + path));
  EXPECT_EQ(error, L"无法连上面板服务器。");
  EXPECT_EQ(machine.http.Lines(),
            Texts{"GET http://h/" + std::string(1023, 'p') + "?" + std::string(1022, 'q')});
  EXPECT_FALSE(Get(L"http://h" + path + L"q"));
  EXPECT_EQ(error, L"面板地址无效");
}

TEST_F(HttpFailure, AConnectionThatCanNotBeMadeTellsItsCode) {
  machine.faults.Fail("WinHttpConnect", {.code = 12007});
  ExpectFailure(L"无法解析面板域名。请检查网络或 DNS。", 12007);
  EXPECT_EQ(machine.calls.Count("WinHttpOpenRequest"), 0u);
}

TEST_F(HttpFailure, ARequestThatCanNotBeCreatedHasATextOfItsOwnAndNoStatus) {
  machine.faults.Fail("WinHttpOpenRequest", {.code = 12029});
  ExpectFailure(L"无法创建面板请求", 0);
  EXPECT_EQ(machine.calls.TextsOf("WinHttpCloseHandle"), Texts{"connection"});
}

TEST_F(HttpFailure, BothHandlesAreClosedAfterAFailedSending) {
  Answer({.sendCode = 12029});
  ExpectFailure(L"无法连上面板服务器。", 12029);
  EXPECT_EQ(machine.calls.TextsOf("WinHttpCloseHandle"), (Texts{"request", "connection"}));
  EXPECT_EQ(machine.calls.Count("WinHttpReceiveResponse"), 0u);
}

TEST_F(HttpFailure, BothHandlesAreClosedAfterAFailedReceiving) {
  Answer({.receiveCode = 12152});
  ExpectFailure(L"面板返回了无法识别的内容。", 12152);
  EXPECT_EQ(machine.calls.TextsOf("WinHttpCloseHandle"), (Texts{"request", "connection"}));
  EXPECT_EQ(machine.calls.Count("WinHttpQueryHeaders"), 0u);
}

TEST_F(HttpFailure, AFailureThatTellsNoCodeIsAFailureAllTheSame) {
  for (const char* call : {"WinHttpConnect", "WinHttpSendRequest", "WinHttpReceiveResponse"}) {
    SCOPED_TRACE(call);
    machine.faults.Fail(call, {.code = 0});
    machine.http.OnNext("GET", url, {});
    ExpectFailure(L"无法连接面板。", 0);
  }
}

TEST_F(HttpFailure, NothingIsRetried) {
  Answer({.sendCode = 12030});
  EXPECT_FALSE(Get());
  EXPECT_EQ(machine.http.Lines(), Texts{"GET https://panel.example/api/x?y=1"});
}

constexpr std::pair<DWORD, const wchar_t*> kTexts[] = {
    {12002, L"连接面板超时。请检查网络，或稍后再试。"},
    {12007, L"无法解析面板域名。请检查网络或 DNS。"},
    {12015, L"面板拒绝了这次登录请求。"},
    {12017, L"面板请求已取消。"},
    {12029, L"无法连上面板服务器。"},
    {12030, L"与面板的连接被中断。"},
    {12032, L"面板要求重新发送请求，请再试一次。"},
    {12152, L"面板返回了无法识别的内容。"},
    {12157, L"面板安全连接失败（证书或加密通道）。"},
    {12175, L"面板安全连接失败（证书或加密通道）。"},
    {8, L"无法连接面板。"},
    {12001, L"无法连接面板。"},
    {12045, L"无法连接面板。"}};

TEST_F(HttpFailure, EveryCodeOfTheSendingHasItsTextAndBecomesTheStatus) {
  for (const auto& [code, text] : kTexts) {
    SCOPED_TRACE(code);
    Answer({.sendCode = code});
    ExpectFailure(text, code);
  }
}

TEST_F(HttpFailure, EveryCodeOfTheReceivingHasItsTextAndBecomesTheStatus) {
  for (const auto& [code, text] : kTexts) {
    SCOPED_TRACE(code);
    Answer({.receiveCode = code});
    ExpectFailure(text, code);
  }
}

TEST_F(HttpFailure, EveryCodeOfTheConnectingHasItsTextAndBecomesTheStatus) {
  for (const auto& [code, text] : kTexts) {
    SCOPED_TRACE(code);
    machine.faults.Fail("WinHttpConnect", {.code = code});
    ExpectFailure(text, code);
  }
}

class HttpErrorText : public HttpFailure {};

TEST_F(HttpErrorText, HasALineForEachKnownCodeAndOneForAllOthers) {
  for (const auto& [code, text] : kTexts) {
    Answer({.sendCode = code});
    ExpectFailure(text, code);
  }
  for (const DWORD code : {12000u, 12003u, 12006u, 12008u, 12014u, 12016u, 12018u, 12028u, 12031u,
                           12033u, 12151u, 12153u, 12156u, 12158u, 12174u, 12176u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(code);
    Answer({.sendCode = code});
    ExpectFailure(L"无法连接面板。", code);
  }
}

// Each phase has its own time-out: one millisecond less is in time.
class HttpTimeOut : public HttpTest {
 protected:
  void ExpectLimit(std::uint64_t sim::HttpAnswer::*phase, std::uint64_t limit) {
    for (const std::uint64_t needed : {limit - 1, limit}) {
      SCOPED_TRACE(needed);
      sim::HttpAnswer answer = {.body = "abc"};
      answer.*phase = needed;
      Answer(answer);
      response = "earlier body";
      error = L"earlier error";
      const bool inTime = needed < limit;
      const std::uint64_t start = machine.clock.Now();
      EXPECT_EQ(Get(), inTime);
      EXPECT_EQ(machine.clock.Now() - start, needed);
      EXPECT_EQ(status, inTime ? 200u : 12002u);
      EXPECT_EQ(response, inTime ? "abc" : "earlier body");
      EXPECT_EQ(error, inTime ? L"earlier error" : L"连接面板超时。请检查网络，或稍后再试。");
    }
  }
};

TEST_F(HttpTimeOut, ResolvingTheNameMayTakeLessThan8Seconds) {
  ExpectLimit(&sim::HttpAnswer::resolveTime, 8000);
}

TEST_F(HttpTimeOut, ConnectingMayTakeLessThan12Seconds) {
  ExpectLimit(&sim::HttpAnswer::connectTime, 12000);
}

TEST_F(HttpTimeOut, SendingMayTakeLessThan15Seconds) {
  ExpectLimit(&sim::HttpAnswer::sendTime, 15000);
}

TEST_F(HttpTimeOut, ReceivingMayTakeLessThan20Seconds) {
  ExpectLimit(&sim::HttpAnswer::receiveTime, 20000);
}

TEST_F(HttpTimeOut, ACallBlocksForTheSumOfItsPhasesAtMost) {
  Answer({.resolveTime = 7999, .connectTime = 11999, .sendTime = 14999, .receiveTime = 20000});
  const std::uint64_t start = machine.clock.Now();
  EXPECT_FALSE(Get());
  EXPECT_EQ(machine.clock.Now() - start, 54997u);
  EXPECT_EQ(status, 12002u);
}

}  // namespace
}  // namespace vpn
