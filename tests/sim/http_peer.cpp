#include "tests/sim/http_peer.h"

#include <winhttp.h>

#include <mutex>

namespace sim {
namespace {

struct Sessions {
  std::mutex mutex;
  std::map<Handles::Value, InternetSession> open;
  Handles::Value next = 0x40000000;  // far from the values of a machine's handles
};

Sessions& AllSessions() {
  static Sessions& sessions = *new Sessions;
  return sessions;
}

}  // namespace

void HttpPeer::On(const std::string& method, const std::string& url, HttpAnswer answer) {
  const MachineLock lock = core_.Lock();
  scripts_[{method, url}].standing = std::move(answer);
}

void HttpPeer::OnNext(const std::string& method, const std::string& url, HttpAnswer answer) {
  const MachineLock lock = core_.Lock();
  scripts_[{method, url}].once.push_back(std::move(answer));
}

void HttpPeer::Handle(Handler handler) {
  const MachineLock lock = core_.Lock();
  handler_ = std::move(handler);
}

std::vector<HttpRequestRecord> HttpPeer::Requests() const {
  const MachineLock lock = core_.Lock();
  return requests_;
}

std::vector<std::string> HttpPeer::Lines() const {
  std::vector<std::string> lines;
  for (const HttpRequestRecord& request : Requests()) {
    lines.push_back(request.method + " " + request.url);
  }
  return lines;
}

void HttpPeer::Forget() {
  const MachineLock lock = core_.Lock();
  requests_.clear();
}

HttpAnswer HttpPeer::Answer(HttpRequestRecord request) {
  const MachineLock lock = core_.Lock();
  requests_.push_back(request);
  if (handler_) {
    if (std::optional<HttpAnswer> answer = handler_(request)) {
      return *std::move(answer);
    }
  }
  const auto script = scripts_.find({request.method, request.url});
  if (script != scripts_.end() && !script->second.once.empty()) {
    HttpAnswer answer = std::move(script->second.once.front());
    script->second.once.pop_front();
    return answer;
  }
  if (script != scripts_.end() && script->second.standing) {
    return *script->second.standing;
  }
  return {.sendCode = ERROR_WINHTTP_CANNOT_CONNECT};
}

std::map<Handles::Value, InternetSession> OpenSessions() {
  Sessions& sessions = AllSessions();
  const std::lock_guard<std::mutex> lock(sessions.mutex);
  return sessions.open;
}

Handles::Value AddSession(InternetSession session) {
  Sessions& sessions = AllSessions();
  const std::lock_guard<std::mutex> lock(sessions.mutex);
  const Handles::Value value = sessions.next;
  sessions.next += 4;
  sessions.open.emplace(value, std::move(session));
  return value;
}

bool SetSessionTimeouts(Handles::Value value, std::array<int, 4> timeouts) {
  Sessions& sessions = AllSessions();
  const std::lock_guard<std::mutex> lock(sessions.mutex);
  const auto session = sessions.open.find(value);
  if (session == sessions.open.end()) {
    return false;
  }
  session->second.timeouts = timeouts;
  return true;
}

bool DropSession(Handles::Value value) {
  Sessions& sessions = AllSessions();
  const std::lock_guard<std::mutex> lock(sessions.mutex);
  return sessions.open.erase(value) != 0;
}

}  // namespace sim
