// One request and its answer: what is handed to the platform, and what the caller gets.
#include "src/panel/panel_client.h"

#include <set>

#include "tests/unit/panel/panel_client_test.h"

namespace vpn {
namespace {

class HttpCall : public HttpTest {};

// The platform's calls of one request but for those around the session, which only the first
// request of the process makes.
const std::set<std::string> kCalls = {
    "WinHttpCrackUrl",           "WinHttpConnect",         "WinHttpOpenRequest",
    "WinHttpSendRequest",        "WinHttpReceiveResponse", "WinHttpQueryHeaders",
    "WinHttpQueryDataAvailable", "WinHttpReadData",        "WinHttpCloseHandle"};

TEST_F(HttpCall, MakesThePlatformsCallsInOrderAndClosesItsTwoHandles) {
  Answer({.body = "abc"});
  EXPECT_TRUE(Get());
  EXPECT_EQ(
      machine.calls.Sequence(kCalls),
      (Texts{
          R"(WinHttpCrackUrl "https://panel.example/api/x?y=1", 0, 0x0)",
          R"(WinHttpConnect session, "panel.example", 443, 0)",
          R"(WinHttpOpenRequest connection, "GET", "/api/x?y=1", null, null, null, 0x800000)",
          "WinHttpSendRequest request, \"Accept: application/json\r\nUser-Agent: Tavrin/0.1\r\n\", "
          "-1, null, 0, 0, 0",
          "WinHttpReceiveResponse request",
          "WinHttpQueryHeaders request, 0x20000013, null, 4, null",
          "WinHttpQueryDataAvailable request",
          "WinHttpReadData request, 3",
          "WinHttpQueryDataAvailable request",
          "WinHttpCloseHandle request",
          "WinHttpCloseHandle connection",
      }));
}

TEST_F(HttpCall, HandsTheWholeBodyToThePlatformWithItsSizeTwice) {
  machine.http.OnNext("POST", url, {});
  const std::string body("{\"a\":\"\xE4\xB8\xAD\"}\0\xFF\r\n", 16);
  EXPECT_TRUE(Keep(PanelClient{L"https://panel.example"}.post(L"/api/x?y=1", body)));
  EXPECT_EQ(machine.http.Requests().at(0).body, body);
  EXPECT_EQ(machine.calls.TextsOf("WinHttpSendRequest"),
            (Texts{"request, \"Accept: application/json\r\nUser-Agent: Tavrin/0.1\r\n"
                   "Content-Type: application/json\r\n\", -1, data, 16, 16, 0"}));
}

TEST_F(HttpCall, APlainHttpPanelWorksWithoutTls) {
  machine.http.OnNext("GET", "http://panel.example/x", {.body = "plain"});
  EXPECT_TRUE(Get(L"http://panel.example/x"));
  EXPECT_EQ(response, "plain");
  EXPECT_EQ(machine.calls.TextsOf("WinHttpConnect"), Texts{R"(session, "panel.example", 80, 0)"});
  EXPECT_EQ(machine.calls.TextsOf("WinHttpOpenRequest"),
            Texts{R"(connection, "GET", "/x", null, null, null, 0x0)"});
}

TEST_F(HttpCall, APortInTheAddressIsUsed) {
  machine.http.OnNext("GET", "https://panel.example:8443/x", {});
  EXPECT_TRUE(Get(L"https://panel.example:8443/x"));
  EXPECT_EQ(machine.calls.TextsOf("WinHttpConnect"), Texts{R"(session, "panel.example", 8443, 0)"});
}

TEST_F(HttpCall, AGetHasTwoHeaderLines) {
  Answer({});
  EXPECT_TRUE(Get());
  EXPECT_EQ(machine.http.Requests().at(0).headers,
            "Accept: application/json\r\nUser-Agent: Tavrin/0.1\r\n");
  EXPECT_EQ(machine.http.Requests().at(0).body, "");
}

TEST_F(HttpCall, APostWithBodyAndCredentialHasAllFiveHeaderLinesInOrder) {
  EXPECT_EQ(HeadersOf(L"Bearer 中\"x", "{}", L"application/json", L"Agent/2"),
            "Accept: application/json\r\n"
            "User-Agent: Agent/2\r\n"
            "Content-Type: application/json\r\n"
            "Authorization: Bearer 中\"x\r\n"
            "auth_data: Bearer 中\"x\r\n");
}

TEST_F(HttpCall, APostWithAnEmptyBodyHasNoContentType) {
  EXPECT_EQ(HeadersOf(L"token", "", L"application/json", L"Agent/2"),
            "Accept: application/json\r\nUser-Agent: Agent/2\r\n"
            "Authorization: token\r\nauth_data: token\r\n");
}

TEST_F(HttpCall, ARequestWithoutACredentialHasNeitherOfItsLines) {
  EXPECT_EQ(HeadersOf(L"", "a=b", L"application/x-www-form-urlencoded", L""),
            "Accept: application/json\r\nUser-Agent: Tavrin/0.1\r\n"
            "Content-Type: application/x-www-form-urlencoded\r\n");
}

TEST_F(HttpCall, AnEmptyUserAgentIsReplacedLikeAMissingOne) {
  EXPECT_EQ(HeadersOf(L"", "", L"", L""), "Accept: application/json\r\nUser-Agent: Tavrin/0.1\r\n");
  Answer({});
  EXPECT_TRUE(Get());
  EXPECT_EQ(machine.http.Requests().back().headers,
            "Accept: application/json\r\nUser-Agent: Tavrin/0.1\r\n");
  EXPECT_EQ(HeadersOf(L"", "", L"", L"v2rayN/6.45"),
            "Accept: application/json\r\nUser-Agent: v2rayN/6.45\r\n");
}

TEST_F(HttpCall, SuccessTellsStatusAndBodyAndLeavesTheErrorAlone) {
  Answer({.status = 200, .body = R"({"data":true})"});
  EXPECT_TRUE(Get());
  EXPECT_EQ(status, 200u);
  EXPECT_EQ(response, R"({"data":true})");
  EXPECT_EQ(error, L"earlier error");
}

TEST_F(HttpCall, AnEmptyBodyEmptiesTheResponse) {
  Answer({.status = 204});
  EXPECT_TRUE(Get());
  EXPECT_EQ(response, "");
  EXPECT_EQ(machine.calls.Count("WinHttpReadData"), 0u);
}

TEST_F(HttpCall, EveryStatusBelow400IsSuccessWithItsBody) {
  for (const DWORD each : {1u, 100u, 199u, 201u, 302u, 304u, 399u}) {
    SCOPED_TRACE(each);
    Answer({.status = each, .body = "moved"});
    response = "earlier body";
    EXPECT_TRUE(Get());
    EXPECT_EQ(status, each);
    EXPECT_EQ(response, "moved");
    EXPECT_EQ(error, L"earlier error");
  }
}

TEST_F(HttpCall, EveryStatusFrom400OnIsAFailureNamedByItsNumberWithItsBody) {
  const std::pair<DWORD, const wchar_t*> rows[] = {
      {400, L"面板 HTTP 400"}, {401, L"面板 HTTP 401"},
      {403, L"面板 HTTP 403"}, {404, L"面板 HTTP 404"},
      {418, L"面板 HTTP 418"}, {422, L"面板 HTTP 422"},
      {429, L"面板 HTTP 429"}, {500, L"面板 HTTP 500"},
      {502, L"面板 HTTP 502"}, {503, L"面板 HTTP 503"},
      {504, L"面板 HTTP 504"}, {521, L"面板 HTTP 521"},
      {525, L"面板 HTTP 525"}, {599, L"面板 HTTP 599"},
      {600, L"面板 HTTP 600"}, {4294967295, L"面板 HTTP 4294967295"}};
  for (const auto& [number, text] : rows) {
    SCOPED_TRACE(number);
    Answer({.status = number, .body = R"({"message":"no"})"});
    response = "earlier body";
    EXPECT_FALSE(Get());
    EXPECT_EQ(status, number);
    EXPECT_EQ(response, R"({"message":"no"})");
    EXPECT_EQ(error, text);
  }
}

TEST_F(HttpCall, AStatusThatCanNotBeReadCountsAsSuccess) {
  Answer({.status = 500, .body = "abc", .statusUnreadable = true});
  EXPECT_TRUE(Get());
  EXPECT_EQ(status, 0u);
  EXPECT_EQ(response, "abc");
  EXPECT_EQ(error, L"earlier error");
}

TEST_F(HttpCall, NobodyNeedsToAskForTheStatus) {
  const auto errorOf = [](const wchar_t* address) { return PanelClient{address}.get(L"").error; };
  const wchar_t* const panel = L"https://panel.example/api/x?y=1";
  Answer({.body = "abc"});
  EXPECT_EQ(errorOf(panel), L"");
  Answer({.status = 404});
  EXPECT_EQ(errorOf(panel), L"面板 HTTP 404");
  Answer({.sendCode = 12007});
  EXPECT_EQ(errorOf(panel), L"无法解析面板域名。请检查网络或 DNS。");
  EXPECT_EQ(errorOf(L"x"), L"面板地址无效");
}

TEST_F(HttpCall, ABodyThatComesInPiecesIsPutTogether) {
  Answer({.body = "abcdefgh", .chunk = 3});
  EXPECT_TRUE(Get());
  EXPECT_EQ(response, "abcdefgh");
  EXPECT_EQ(machine.calls.TextsOf("WinHttpReadData"),
            (Texts{"request, 3", "request, 3", "request, 2"}));
}

TEST_F(HttpCall, AReadThatGivesLessThanWasAnnouncedAddsOnlyWhatItGave) {
  Answer({.body = "abcdefgh", .chunk = 5, .readAtMost = 2});
  EXPECT_TRUE(Get());
  EXPECT_EQ(response, "abcdefgh");
}

TEST_F(HttpCall, ABodyKeepsEveryByte) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes += static_cast<char>(byte);
  }
  Answer({.body = bytes});
  EXPECT_TRUE(Get());
  EXPECT_EQ(response, bytes);
}

TEST_F(HttpCall, ABodyOfTenMebibytesIsReadWhole) {
  const std::string body(10 * 1024 * 1024, 'x');
  Answer({.body = body});
  EXPECT_TRUE(Get());
  EXPECT_TRUE(response == body);
}

TEST_F(HttpCall, ABodyThatBreaksOffIsNoFailureAndGivesWhatCame) {
  for (const bool inRead : {false, true}) {
    SCOPED_TRACE(inRead);
    Answer({.body = "abcdefgh", .breaksAfter = 5, .breakCode = 12030, .breaksInRead = inRead});
    EXPECT_TRUE(Get());
    EXPECT_EQ(status, 200u);
    EXPECT_EQ(response, "abcde");
    EXPECT_EQ(error, L"earlier error");
  }
}

TEST_F(HttpCall, ABodyThatBreaksOffAtOnceGivesAnEmptyResponse) {
  for (const bool inRead : {false, true}) {
    Answer({.status = 500, .body = "abc", .breaksAfter = 0, .breaksInRead = inRead});
    response = "earlier body";
    EXPECT_FALSE(Get());
    EXPECT_EQ(response, "");
    EXPECT_EQ(error, L"面板 HTTP 500");
    EXPECT_EQ(status, 500u);
  }
}

TEST_F(HttpCall, AThousandCallsLeaveNothingOpen) {
  machine.http.On("GET", url, {.body = "abc"});
  for (int i = 0; i < 1000; ++i) {
    ASSERT_TRUE(Get());
  }
  EXPECT_EQ(machine.OpenHandles(), Texts());
  EXPECT_EQ(machine.calls.Count("WinHttpCloseHandle"), 2000u);
}

}  // namespace
}  // namespace vpn
