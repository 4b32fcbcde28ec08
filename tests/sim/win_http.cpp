// WinHTTP: sessions, connections, requests.
#include "tests/sim/call.h"
#include "tests/sim/http_peer.h"
#include "tests/sim/text.h"

#include <winhttp.h>

#include <algorithm>
#include <ctime>
#include <cwchar>
#include <optional>

using sim::Arg;
using sim::Call;
using sim::InternetRequest;

namespace {

std::uintptr_t ValueOf(HINTERNET handle) {
  return reinterpret_cast<std::uintptr_t>(handle);
}

std::optional<sim::InternetSession> FindSession(HINTERNET handle) {
  const auto sessions = sim::OpenSessions();
  const auto session = sessions.find(ValueOf(handle));
  return session == sessions.end() ? std::nullopt : std::optional(session->second);
}

Arg Internet(HINTERNET handle) {
  return FindSession(handle) ? Arg(std::string("session")) : Arg::OfHandle(ValueOf(handle));
}

template <class T>
std::shared_ptr<T> Find(const Call& call, HINTERNET handle) {
  return call->handles.FindAs<T>(ValueOf(handle), sim::Family::kInternet, call.name());
}

// A request in this state; null with the last error set.
std::shared_ptr<InternetRequest> FindRequest(const Call& call, HINTERNET handle,
                                             InternetRequest::State state) {
  const auto request = Find<InternetRequest>(call, handle);
  if (!request) {
    Call::SetThreadError(ERROR_INVALID_HANDLE);
    return nullptr;
  }
  if (request->state != state) {
    Call::SetThreadError(ERROR_WINHTTP_INCORRECT_HANDLE_STATE);
    return nullptr;
  }
  return request;
}

// The path as it is requested: never empty.
std::string UrlOf(const sim::InternetConnection& connection, LPCWSTR path, bool secure) {
  const std::string given = sim::Narrow(path == nullptr ? L"" : path);
  const int ownPort = secure ? INTERNET_DEFAULT_HTTPS_PORT : INTERNET_DEFAULT_HTTP_PORT;
  return std::string(secure ? "https://" : "http://") + connection.host +
         (connection.port == ownPort ? "" : ":" + std::to_string(connection.port)) +
         (given.starts_with('/') ? "" : "/") + given;
}

// Lets a phase take its time; false when its time-out, in which 0 and less is for ever, came first.
bool TakeTime(const Call& call, std::uint64_t needed, int timeout) {
  const bool inTime = timeout <= 0 || needed < static_cast<std::uint64_t>(timeout);
  call->clock.Advance(inTime ? needed : static_cast<std::uint64_t>(timeout));
  return inTime;
}

DWORD SendCode(const Call& call, const InternetRequest& request) {
  const sim::HttpAnswer& answer = request.answer;
  const auto& timeouts = request.session.timeouts;
  const bool inTime = TakeTime(call, answer.resolveTime, timeouts[0]) &&
                      TakeTime(call, answer.connectTime, timeouts[1]) &&
                      TakeTime(call, answer.sendTime, timeouts[2]);
  return inTime ? answer.sendCode : ERROR_WINHTTP_TIMEOUT;
}

std::string SizeText(DWORD size) {
  return size == 0xFFFFFFFF ? "-1" : std::to_string(size);
}

// Whether the body has broken off, which the asking for data tells, or the read.
bool IsBroken(const InternetRequest& request, bool inRead) {
  const sim::HttpAnswer& answer = request.answer;
  return answer.breaksAfter && request.position >= *answer.breaksAfter &&
         answer.breaksInRead == inRead;
}

// Bytes of the body that come in next.
size_t NextBytes(const InternetRequest& request) {
  const sim::HttpAnswer& answer = request.answer;
  size_t end = answer.body.size();
  if (answer.breaksAfter && request.position < *answer.breaksAfter) {
    end = std::min(end, *answer.breaksAfter);
  }
  return std::min(end - request.position, answer.chunk);
}

}  // namespace

HINTERNET WinHttpOpen(LPCWSTR agent, DWORD accessType, LPCWSTR proxy, LPCWSTR bypass, DWORD flags) {
  Call call("WinHttpOpen", {agent, accessType, proxy, bypass, Arg::OfHex(flags)});
  if (call.failed()) {
    return call.Fail<HINTERNET>(nullptr);
  }
  if (flags != 0) {  // only the synchronous form is modelled
    return call.Fail<HINTERNET>(nullptr, ERROR_INVALID_PARAMETER);
  }
  sim::InternetSession session;
  session.agent = sim::Narrow(agent == nullptr ? L"" : agent);
  session.accessType = accessType;
  return reinterpret_cast<HINTERNET>(sim::AddSession(std::move(session)));
}

BOOL WinHttpSetTimeouts(HINTERNET handle, int resolve, int connect, int send, int receive) {
  Call call("WinHttpSetTimeouts", {Internet(handle), resolve, connect, send, receive});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!sim::SetSessionTimeouts(ValueOf(handle), {resolve, connect, send, receive})) {
    return call.Fail(FALSE, ERROR_WINHTTP_INCORRECT_HANDLE_TYPE);  // only sessions are modelled
  }
  return TRUE;
}

HINTERNET WinHttpConnect(HINTERNET handle, LPCWSTR host, INTERNET_PORT port, DWORD reserved) {
  Call call("WinHttpConnect", {Internet(handle), host, static_cast<std::uint32_t>(port), reserved});
  if (call.failed()) {
    return call.Fail<HINTERNET>(nullptr);
  }
  const auto session = FindSession(handle);
  if (!session) {
    call->AddViolation("WinHttpConnect on a value that is no session");
    return call.Fail<HINTERNET>(nullptr, ERROR_INVALID_HANDLE);
  }
  if (host == nullptr || reserved != 0) {
    return call.Fail<HINTERNET>(nullptr, ERROR_INVALID_PARAMETER);
  }
  const auto connection = std::make_shared<sim::InternetConnection>();
  connection->session = *session;
  connection->host = sim::Narrow(host);
  connection->port = port;
  return call.OpenHandle(connection);
}

HINTERNET WinHttpOpenRequest(HINTERNET handle, LPCWSTR method, LPCWSTR path, LPCWSTR version,
                             LPCWSTR referrer, LPCWSTR* acceptTypes, DWORD flags) {
  Call call("WinHttpOpenRequest",
            {Internet(handle), method, path, version, referrer,
             Arg(std::string(acceptTypes == nullptr ? "null" : "types")), Arg::OfHex(flags)});
  if (call.failed()) {
    return call.Fail<HINTERNET>(nullptr);
  }
  const auto connection = Find<sim::InternetConnection>(call, handle);
  if (!connection) {
    return call.Fail<HINTERNET>(nullptr, ERROR_INVALID_HANDLE);
  }
  const auto request = std::make_shared<InternetRequest>();
  request->session = connection->session;
  request->method = method == nullptr ? "GET" : sim::Narrow(method);
  request->url = UrlOf(*connection, path, (flags & WINHTTP_FLAG_SECURE) != 0);
  return call.OpenHandle(request);
}

BOOL WinHttpSendRequest(HINTERNET handle, LPCWSTR headers, DWORD headersLength, LPVOID optional,
                        DWORD optionalLength, DWORD totalLength, DWORD_PTR context) {
  Call call("WinHttpSendRequest",
            {Internet(handle), headers, Arg(SizeText(headersLength)),
             Arg(std::string(optional == nullptr ? "null" : "data")), optionalLength, totalLength,
             static_cast<std::uint32_t>(context)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto request = FindRequest(call, handle, InternetRequest::State::kFresh);
  if (!request) {
    return FALSE;
  }
  if (totalLength != optionalLength || (optional == nullptr && optionalLength != 0)) {
    return call.Fail(FALSE, ERROR_INVALID_PARAMETER);  // WinHttpWriteData is not modelled
  }
  sim::HttpRequestRecord record = {request->method, request->url, "", ""};
  if (headers != nullptr) {
    const size_t length = headersLength == 0xFFFFFFFF ? std::wcslen(headers) : headersLength;
    record.headers = sim::Narrow({headers, length});
  }
  record.body.assign(static_cast<const char*>(optional), optionalLength);
  request->answer = call->http.Answer(std::move(record));
  if (const DWORD code = SendCode(call, *request)) {
    return call.Fail(FALSE, code);
  }
  request->state = InternetRequest::State::kSent;
  return TRUE;
}

BOOL WinHttpReceiveResponse(HINTERNET handle, LPVOID reserved) {
  Call call("WinHttpReceiveResponse", {Internet(handle)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto request = FindRequest(call, handle, InternetRequest::State::kSent);
  if (!request) {
    return FALSE;
  }
  if (reserved != nullptr) {
    return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
  }
  if (!TakeTime(call, request->answer.receiveTime, request->session.timeouts[3])) {
    return call.Fail(FALSE, ERROR_WINHTTP_TIMEOUT);
  }
  if (request->answer.receiveCode != 0) {
    return call.Fail(FALSE, request->answer.receiveCode);
  }
  request->state = InternetRequest::State::kReceived;
  return TRUE;
}

namespace {

BOOL GiveDate(const Call& call, const sim::HttpAnswer& answer, SYSTEMTIME* date) {
  if (!answer.dateBehind) {
    return call.Fail(FALSE, ERROR_WINHTTP_HEADER_NOT_FOUND);
  }
  const std::time_t seconds = call->clock.UnixMilliseconds() / 1000 - *answer.dateBehind;
  std::tm parts = {};
  (void)gmtime_r(&seconds, &parts);
  *date = {};
  date->wYear = static_cast<WORD>(parts.tm_year + 1900);
  date->wMonth = static_cast<WORD>(parts.tm_mon + 1);
  date->wDay = static_cast<WORD>(parts.tm_mday);
  date->wHour = static_cast<WORD>(parts.tm_hour);
  date->wMinute = static_cast<WORD>(parts.tm_min);
  date->wSecond = static_cast<WORD>(parts.tm_sec);
  return TRUE;
}

}  // namespace

BOOL WinHttpQueryHeaders(HINTERNET handle, DWORD infoLevel, LPCWSTR name, LPVOID buffer,
                         DWORD* bufferLength, DWORD* index) {
  Call call("WinHttpQueryHeaders", {Internet(handle), Arg::OfHex(infoLevel), name, *bufferLength,
                                    Arg(std::string(index == nullptr ? "null" : "index"))});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto request = FindRequest(call, handle, InternetRequest::State::kReceived);
  if (!request) {
    return FALSE;
  }
  if (infoLevel == (WINHTTP_QUERY_DATE | WINHTTP_QUERY_FLAG_SYSTEMTIME)) {
    return GiveDate(call, request->answer, static_cast<SYSTEMTIME*>(buffer));
  }
  const bool known = infoLevel == (WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER);
  if (!known || request->answer.statusUnreadable) {
    return call.Fail(FALSE, ERROR_WINHTTP_HEADER_NOT_FOUND);
  }
  if (*bufferLength < sizeof(DWORD)) {
    return call.Fail(FALSE, ERROR_INSUFFICIENT_BUFFER);
  }
  *static_cast<DWORD*>(buffer) = request->answer.status;
  *bufferLength = sizeof(DWORD);
  return TRUE;
}

BOOL WinHttpQueryDataAvailable(HINTERNET handle, DWORD* available) {
  Call call("WinHttpQueryDataAvailable", {Internet(handle)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto request = FindRequest(call, handle, InternetRequest::State::kReceived);
  if (!request) {
    return FALSE;
  }
  if (request->available == 0) {
    if (IsBroken(*request, false)) {
      return call.Fail(FALSE, request->answer.breakCode);
    }
    request->available = NextBytes(*request);
  }
  *available = static_cast<DWORD>(request->available);
  return TRUE;
}

BOOL WinHttpReadData(HINTERNET handle, LPVOID buffer, DWORD bytesToRead, DWORD* bytesRead) {
  Call call("WinHttpReadData", {Internet(handle), bytesToRead});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto request = FindRequest(call, handle, InternetRequest::State::kReceived);
  if (!request) {
    return FALSE;
  }
  if (IsBroken(*request, true)) {
    return call.Fail(FALSE, request->answer.breakCode);
  }
  if (request->available == 0) {
    request->available = NextBytes(*request);
  }
  size_t count = std::min<size_t>(bytesToRead, request->available);
  if (request->answer.readAtMost != 0) {
    count = std::min(count, request->answer.readAtMost);
  }
  std::copy_n(request->answer.body.data() + request->position, count, static_cast<char*>(buffer));
  request->position += count;
  request->available -= count;
  *bytesRead = static_cast<DWORD>(count);
  return TRUE;
}

BOOL WinHttpCloseHandle(HINTERNET handle) {
  Call call("WinHttpCloseHandle", {Internet(handle)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (sim::DropSession(ValueOf(handle)) ||
      call->handles.Close(ValueOf(handle), sim::Family::kInternet, call.name())) {
    return TRUE;
  }
  return call.Fail(FALSE, ERROR_INVALID_HANDLE);
}
