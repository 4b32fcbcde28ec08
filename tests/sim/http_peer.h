// What answers the machine's HTTP requests, and what it was asked.
//
//   machine->http.On("GET", "https://panel.example/api/v1/user/info", {.body = R"({"data":{}})"});
//   machine->http.OnNext("POST", url, {.status = 422, .body = R"({"message":"…"})"});
//   machine->http.OnNext("POST", url, {.sendCode = ERROR_WINHTTP_CANNOT_CONNECT});
//   ... call the product ...
//   EXPECT_EQ(machine->http.Requests()[0].headers, "Accept: application/json\r\n…");
//
// The machine's own resolver, sockets and routes have no part in this. Redirects are handed on as
// they are.
#ifndef TAVRIN_TESTS_SIM_HTTP_PEER_H_
#define TAVRIN_TESTS_SIM_HTTP_PEER_H_

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/sim/core.h"
#include "tests/sim/handles.h"

namespace sim {

// One answer, or one failure. Codes are WinHTTP's, 0 for none; times are virtual milliseconds, and
// a phase that takes as long as the session's time-out for it, or longer, ends as a time-out then.
struct HttpAnswer {
  std::uint32_t status = 200;
  std::string body{};
  std::uint32_t sendCode = 0;     // WinHttpSendRequest fails: name, connection, TLS, sending
  std::uint32_t receiveCode = 0;  // WinHttpReceiveResponse fails
  bool statusUnreadable = false;
  std::optional<std::int64_t> dateBehind = std::nullopt;  // seconds; none: no Date is sent
  size_t chunk = 8192;                                    // bytes that come in at a time
  size_t readAtMost = 0;                             // bytes that one read gives; 0: all asked for
  std::optional<size_t> breaksAfter = std::nullopt;  // bytes, where the body breaks off
  std::uint32_t breakCode = 12030;                   // and how it does
  bool breaksInRead = false;                         // in the read, not in the asking for data
  std::uint64_t resolveTime = 0;
  std::uint64_t connectTime = 0;
  std::uint64_t sendTime = 0;
  std::uint64_t receiveTime = 0;
};

// One request that the product sent, or tried to. Text is UTF-8. The URL is put together from what
// WinHTTP was given, without a scheme's own port; the headers are the block as it was given,
// without those that WinHTTP adds by itself.
struct HttpRequestRecord {
  std::string method;
  std::string url;
  std::string headers;
  std::string body;
};

class HttpPeer {
 public:
  explicit HttpPeer(Core& core) : core_(core) {}

  // For every such request from now on; replaces an earlier one.
  void On(const std::string& method, const std::string& url, HttpAnswer answer);
  // For one such request, before the standing answer; several queue up.
  void OnNext(const std::string& method, const std::string& url, HttpAnswer answer);
  // Asked before the scripts, under the machine's lock; nullopt leaves the request to them.
  using Handler = std::function<std::optional<HttpAnswer>(const HttpRequestRecord&)>;
  void Handle(Handler handler);

  // Every request in order; those that failed in WinHttpSendRequest by a script count.
  std::vector<HttpRequestRecord> Requests() const;
  // The same as `GET https://panel.example/x`.
  std::vector<std::string> Lines() const;
  // Drops the records, and keeps the scripts.
  void Forget();

  // For the platform's calls: notes the request. Nobody listens at an address without a script.
  HttpAnswer Answer(HttpRequestRecord request);

 private:
  struct Script {
    std::deque<HttpAnswer> once;
    std::optional<HttpAnswer> standing;
  };

  Core& core_;
  Handler handler_;
  std::map<std::pair<std::string, std::string>, Script> scripts_;
  std::vector<HttpRequestRecord> requests_;
};

// A WinHTTP session. Programs keep theirs for good, so sessions belong to the test program and not
// to a machine: one that was opened on an earlier machine is good on every later one, and none is
// missed at a machine's end. A test of the first call needs a process of its own.
struct InternetSession {
  std::string agent;
  std::uint32_t accessType = 0;
  std::array<int, 4> timeouts = {0, 60000, 30000, 30000};  // resolve, connect, send, receive
};

// By handle value.
std::map<Handles::Value, InternetSession> OpenSessions();

// For the platform's calls.
Handles::Value AddSession(InternetSession session);
bool SetSessionTimeouts(Handles::Value value, std::array<int, 4> timeouts);
bool DropSession(Handles::Value value);

struct InternetConnection : Object {
  Family family() const override { return Family::kInternet; }
  std::string Describe() const override { return "connection"; }

  InternetSession session;
  std::string host;
  std::uint16_t port = 0;
};

struct InternetRequest : Object {
  Family family() const override { return Family::kInternet; }
  std::string Describe() const override { return "request"; }

  enum class State { kFresh, kSent, kReceived };
  State state = State::kFresh;
  InternetSession session;
  std::string method;
  std::string url;
  HttpAnswer answer;
  size_t position = 0;   // in the answer's body
  size_t available = 0;  // bytes that came in and were not read
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_HTTP_PEER_H_
