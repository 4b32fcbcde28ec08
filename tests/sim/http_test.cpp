#include "tests/sim/http_peer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/sim/fixture.h"
#include "tests/sim/text.h"

#include <windows.h>
#include <winhttp.h>

namespace sim {
namespace {

using Texts = std::vector<std::string>;

// A client that opens and closes everything by itself, its session too.
class Http : public MachineTest {
 protected:
  void Open(DWORD flags = WINHTTP_FLAG_SECURE, INTERNET_PORT port = 443) {
    session = WinHttpOpen(L"agent", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0);
    connection = WinHttpConnect(session, L"panel.example", port, 0);
    request = WinHttpOpenRequest(connection, L"GET", L"/x?y", nullptr, nullptr, nullptr, flags);
  }
  bool Send(const char* body = "") {
    std::string bytes = body;
    const auto size = static_cast<DWORD>(bytes.size());
    return WinHttpSendRequest(request, L"A: b\r\n", 0xFFFFFFFF,
                              bytes.empty() ? nullptr : bytes.data(), size, size, 0) != FALSE;
  }
  bool Receive() { return WinHttpReceiveResponse(request, nullptr) != FALSE; }
  DWORD Available() {
    DWORD size = 777;
    return WinHttpQueryDataAvailable(request, &size) != FALSE ? size : 0xFFFF;
  }
  std::string Read(DWORD size) {
    std::string bytes(size, '?');
    DWORD count = 0;
    return WinHttpReadData(request, bytes.data(), size, &count) != FALSE ? bytes.substr(0, count)
                                                                         : "failed";
  }
  void Close() {
    for (const HINTERNET handle : {request, connection, session}) {
      EXPECT_TRUE(WinHttpCloseHandle(handle));
    }
  }

  const std::string url = "https://panel.example/x?y";
  HINTERNET session = nullptr;
  HINTERNET connection = nullptr;
  HINTERNET request = nullptr;
};

TEST_F(Http, AnswersByMethodAndUrlAndRecordsTheRequest) {
  machine.http.On("GET", url, {.status = 418, .body = "tea"});
  Open();
  ASSERT_TRUE(Send("body") && Receive());
  DWORD status = 0;
  DWORD size = sizeof status;
  EXPECT_TRUE(WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                                  nullptr, &status, &size, nullptr));
  EXPECT_EQ(status, 418u);
  EXPECT_EQ(Available(), 3u);
  EXPECT_EQ(Read(3), "tea");
  EXPECT_EQ(Available(), 0u);
  Close();
  ASSERT_EQ(machine.http.Requests().size(), 1u);
  const HttpRequestRecord record = machine.http.Requests()[0];
  EXPECT_EQ(record.method, "GET");
  EXPECT_EQ(record.url, "https://panel.example/x?y");
  EXPECT_EQ(record.headers, "A: b\r\n");
  EXPECT_EQ(record.body, "body");
}

TEST_F(Http, TheUrlNamesAPortThatIsNotTheSchemesOwn) {
  Open(0, 443);
  EXPECT_FALSE(Send());
  Close();
  Open(0, 80);
  EXPECT_FALSE(Send());
  Close();
  EXPECT_EQ(machine.http.Lines(),
            (Texts{"GET http://panel.example:443/x?y", "GET http://panel.example/x?y"}));
}

TEST_F(Http, NobodyListensAtAnAddressWithoutAScript) {
  Open();
  EXPECT_FALSE(Send());
  EXPECT_EQ(GetLastError(), 12029u);
  Close();
}

TEST_F(Http, SingleAnswersComeBeforeTheStandingOneAndAHandlerBeforeBoth) {
  machine.http.On("GET", url, {.body = "standing"});
  machine.http.OnNext("GET", url, {.body = "first"});
  machine.http.OnNext("GET", url, {.body = "second"});
  int asked = 0;
  machine.http.Handle([&](const HttpRequestRecord& record) -> std::optional<HttpAnswer> {
    EXPECT_EQ(record.url, "https://panel.example/x?y");
    return ++asked == 1 ? std::optional<HttpAnswer>({.body = "handler"}) : std::nullopt;
  });
  Texts bodies;
  for (int i = 0; i < 4; ++i) {
    Open();
    ASSERT_TRUE(Send() && Receive());
    bodies.push_back(Read(100));
    Close();
  }
  EXPECT_EQ(bodies, (Texts{"handler", "first", "second", "standing"}));
}

TEST_F(Http, TransportFailuresComeFromTheCallsThatMakeThem) {
  machine.http.OnNext("GET", url, {.sendCode = 12175});
  Open();
  EXPECT_FALSE(Send());
  EXPECT_EQ(GetLastError(), 12175u);
  Close();
  machine.http.OnNext("GET", url, {.receiveCode = 12152});
  Open();
  EXPECT_TRUE(Send());
  EXPECT_FALSE(Receive());
  EXPECT_EQ(GetLastError(), 12152u);
  Close();
}

TEST_F(Http, APhaseThatTakesItsWholeTimeOutEndsAsATimeOut) {
  for (const std::uint64_t needed : {99u, 100u}) {
    machine.http.OnNext("GET", url, {.connectTime = needed, .sendTime = 5});
    Open();
    EXPECT_TRUE(WinHttpSetTimeouts(session, 0, 100, 0, 0));
    Close();
    session = WinHttpOpen(L"agent", 1, nullptr, nullptr, 0);
    EXPECT_TRUE(WinHttpSetTimeouts(session, 0, 100, 0, 50));
    connection = WinHttpConnect(session, L"panel.example", 443, 0);
    request = WinHttpOpenRequest(connection, L"GET", L"/x?y", nullptr, nullptr, nullptr,
                                 WINHTTP_FLAG_SECURE);
    const std::uint64_t start = machine.clock.Now();
    EXPECT_EQ(Send(), needed == 99);
    EXPECT_EQ(machine.clock.Now() - start, needed == 99 ? 104u : 100u);
    Close();
  }
  EXPECT_EQ(GetLastError(), 12002u);
}

TEST_F(Http, TheBodyComesInPiecesAndCanBreakOff) {
  machine.http.OnNext("GET", url, {.body = "abcdefgh", .chunk = 3});
  Open();
  ASSERT_TRUE(Send() && Receive());
  EXPECT_EQ(Available(), 3u);
  EXPECT_EQ(Read(2), "ab");
  EXPECT_EQ(Available(), 1u);
  EXPECT_EQ(Read(9), "c");
  EXPECT_EQ(Read(9), "def");
  EXPECT_EQ(Available(), 2u);
  Close();
  machine.http.OnNext("GET", url, {.body = "abcdefgh", .chunk = 3, .breaksAfter = 4});
  Open();
  ASSERT_TRUE(Send() && Receive());
  EXPECT_EQ(Read(9), "abc");
  EXPECT_EQ(Read(9), "d");
  EXPECT_EQ(Available(), 0xFFFFu);
  EXPECT_EQ(GetLastError(), 12030u);
  Close();
  machine.http.OnNext(
      "GET", url, {.body = "abcdefgh", .breaksAfter = 4, .breakCode = 12002, .breaksInRead = true});
  Open();
  ASSERT_TRUE(Send() && Receive());
  EXPECT_EQ(Available(), 4u);
  EXPECT_EQ(Read(4), "abcd");
  EXPECT_EQ(Available(), 4u);
  EXPECT_EQ(Read(4), "failed");
  EXPECT_EQ(GetLastError(), 12002u);
  Close();
}

TEST_F(Http, ARequestThatIsNotSentHasNoAnswer) {
  Open();
  EXPECT_FALSE(Receive());
  EXPECT_EQ(GetLastError(), 12019u);
  EXPECT_EQ(Available(), 0xFFFFu);
  EXPECT_EQ(GetLastError(), 12019u);
  Close();
}

TEST_F(Http, ASessionIsGoodOnALaterMachineAndMissedAtTheEndOfNone) {
  session = WinHttpOpen(L"agent", 1, nullptr, nullptr, 0);
  EXPECT_EQ(machine.OpenHandles(), Texts());
  {
    const InstalledMachine other;
    connection = WinHttpConnect(session, L"panel.example", 443, 0);
    EXPECT_EQ(other->OpenHandles(), Texts{"connection from WinHttpConnect"});
    EXPECT_TRUE(WinHttpCloseHandle(connection));
    EXPECT_TRUE(WinHttpCloseHandle(session));
    EXPECT_EQ(WinHttpConnect(session, L"panel.example", 443, 0), nullptr);
    EXPECT_EQ(other->Violations(), Texts{"WinHttpConnect on a value that is no session"});
  }
  Machine::Install(std::make_shared<Machine>());
}

TEST_F(Http, AConnectionThatStaysOpenIsMissed) {
  Open();
  EXPECT_EQ(machine.OpenHandles(),
            (Texts{"connection from WinHttpConnect", "request from WinHttpOpenRequest"}));
  Close();
  EXPECT_FALSE(WinHttpCloseHandle(request));
  EXPECT_EQ(machine.Violations(),
            Texts{"WinHttpCloseHandle on a closed handle: request from WinHttpOpenRequest"});
  machine.ForgetViolations();
}

struct Cracked {
  DWORD code = 0;
  std::wstring host;
  int port = 0;
  int scheme = 0;
  std::wstring path;
  bool operator==(const Cracked&) const = default;
};

Cracked Crack(const std::wstring& url) {
  wchar_t host[256];
  wchar_t path[2048];
  URL_COMPONENTS parts = {};
  parts.dwStructSize = sizeof parts;
  parts.lpszHostName = host;
  parts.dwHostNameLength = 256;
  parts.lpszUrlPath = path;
  parts.dwUrlPathLength = 2048;
  if (!WinHttpCrackUrl(url.c_str(), 0, 0, &parts)) {
    return {GetLastError(), L"", 0, 0, L""};
  }
  return {0, host, parts.nPort, parts.nScheme, path};
}

TEST_F(Http, AddressesAreTakenApartAsThePlatformDoesIt) {
  EXPECT_EQ(Crack(L"https://panel.example/a/b?c=d#e"),
            (Cracked{0, L"panel.example", 443, 2, L"/a/b?c=d#e"}));
  EXPECT_EQ(Crack(L"HTTP://Host"), (Cracked{0, L"Host", 80, 1, L""}));
  EXPECT_EQ(Crack(L"http://host?x=1"), (Cracked{0, L"host", 80, 1, L"?x=1"}));
  EXPECT_EQ(Crack(L"http://user:pw@host:99/x@y"), (Cracked{0, L"host", 99, 1, L"/x@y"}));
  EXPECT_EQ(Crack(L"http://[2001:db8::1]:81/"), (Cracked{0, L"[2001:db8::1]", 81, 1, L"/"}));
  EXPECT_EQ(Crack(L"http://[2001:db8::1]/"), (Cracked{0, L"[2001:db8::1]", 80, 1, L"/"}));
  EXPECT_EQ(Crack(L"http://host:/x"), (Cracked{0, L"host", 80, 1, L"/x"}));
  EXPECT_EQ(Crack(L"http://host:65535/"), (Cracked{0, L"host", 65535, 1, L"/"}));
}

TEST_F(Http, BadAddressesHaveTheirOwnCodes) {
  for (const wchar_t* bad :
       {L"", L"panel.example/x", L"ftp://host/", L"://host", L" http://host/"}) {
    EXPECT_EQ(Crack(bad).code, 12006u) << Narrow(bad);
  }
  for (const wchar_t* bad : {L"http:", L"http:/x", L"http://", L"http:///x", L"http://host:65536/",
                             L"http://host:x/", L"http://[::1/"}) {
    EXPECT_EQ(Crack(bad).code, 12005u) << Narrow(bad);
  }
  EXPECT_EQ(Crack(L"http://" + std::wstring(255, L'h') + L"/").code, 0u);
  EXPECT_EQ(Crack(L"http://" + std::wstring(256, L'h') + L"/").code, 122u);
  EXPECT_EQ(Crack(L"http://h/" + std::wstring(1000, L'p') + L"?" + std::wstring(1045, L'q')).code,
            0u);
  EXPECT_EQ(Crack(L"http://h/" + std::wstring(1000, L'p') + L"?" + std::wstring(1046, L'q')).code,
            122u);
}

}  // namespace
}  // namespace sim
