#include "src/panel/http_request.h"

#include <array>

#include "src/common/mutex.h"
#include "src/common/unique_handle.h"

namespace vpn {
namespace {

struct InternetHandleTraits {
  using Type = HINTERNET;
  static Type empty() { return nullptr; }
  static bool isValid(Type value) { return value != nullptr; }
  static void close(Type value) { (void)WinHttpCloseHandle(value); }
};
using InternetHandle = UniqueHandle<InternetHandleTraits>;

struct UrlParts {
  std::array<wchar_t, 256> host{};
  std::array<wchar_t, 2048> path{};  // the query stays on it
  INTERNET_PORT port = 0;
  bool secure = false;
};

bool CrackUrl(const std::wstring& url, UrlParts& parts) {
  URL_COMPONENTS components = {};
  components.dwStructSize = sizeof(components);
  components.lpszHostName = parts.host.data();
  components.dwHostNameLength = static_cast<DWORD>(parts.host.size());
  components.lpszUrlPath = parts.path.data();
  components.dwUrlPathLength = static_cast<DWORD>(parts.path.size());
  if (WinHttpCrackUrl(url.c_str(), 0, 0, &components) == FALSE) {
    return false;
  }
  parts.port = components.nPort;
  parts.secure = components.nScheme == INTERNET_SCHEME_HTTPS;
  return true;
}

// The credential goes out under both names that panels have been seen to use.
std::wstring HeaderBlock(const wchar_t* userAgent, bool hasBody, const std::wstring& contentType,
                         const std::wstring& authorization) {
  const bool hasAgent = userAgent != nullptr && *userAgent != L'\0';
  std::wstring block = L"Accept: application/json\r\nUser-Agent: ";
  block += hasAgent ? userAgent : kUserAgent;
  block += L"\r\n";
  if (hasBody) {
    block += L"Content-Type: " + contentType + L"\r\n";
  }
  if (!authorization.empty()) {
    block += L"Authorization: " + authorization + L"\r\nauth_data: " + authorization + L"\r\n";
  }
  return block;
}

// True when an answer has begun to arrive, else false with the platform's code in `code`.
bool Send(HINTERNET request, const std::wstring& headers, const std::string& body, DWORD& code) {
  void* const data = body.empty() ? WINHTTP_NO_REQUEST_DATA : const_cast<char*>(body.data());
  const auto size = static_cast<DWORD>(body.size());
  constexpr auto kAutomatic = static_cast<DWORD>(-1);
  if (WinHttpSendRequest(request, headers.c_str(), kAutomatic, data, size, size, 0) == FALSE ||
      WinHttpReceiveResponse(request, nullptr) == FALSE) {
    code = GetLastError();
    return false;
  }
  return true;
}

bool QueryStatus(HINTERNET request, DWORD& status) {
  DWORD size = sizeof(status);
  return WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                             WINHTTP_HEADER_NAME_BY_INDEX, &status, &size,
                             WINHTTP_NO_HEADER_INDEX) != FALSE;
}

// What breaks off is not reported: the caller gets what came until then.
std::string ReadBody(HINTERNET request) {
  std::string body;
  for (;;) {
    DWORD available = 0;
    if (WinHttpQueryDataAvailable(request, &available) == FALSE || available == 0) {
      return body;
    }
    std::string chunk(available, '\0');
    DWORD count = 0;
    if (WinHttpReadData(request, chunk.data(), available, &count) == FALSE) {
      return body;
    }
    body.append(chunk, 0, count);
  }
}

// Leaves the code in `statusOut` as well.
bool FailTransport(DWORD code, std::wstring& error, DWORD* statusOut) {
  error = HttpErrorText(code);
  if (statusOut != nullptr) {
    *statusOut = code;
  }
  return false;
}

// Guards the creation and the copying of the session.
Mutex SessionLock;

// Never destroyed: a fetch may still run while the process exits.
SharedInternetHandle& Session VPN_GUARDED_BY(SessionLock) = *new SharedInternetHandle;

SharedInternetHandle OpenSession() {
  constexpr int kResolve = 8000;  // time-outs in milliseconds
  constexpr int kConnect = 12000;
  constexpr int kSend = 15000;
  constexpr int kReceive = 20000;
  HINTERNET session = WinHttpOpen(kUserAgent, WINHTTP_ACCESS_TYPE_NO_PROXY, WINHTTP_NO_PROXY_NAME,
                                  WINHTTP_NO_PROXY_BYPASS, 0);
  if (session == nullptr) {
    return nullptr;
  }
  (void)WinHttpSetTimeouts(session, kResolve, kConnect, kSend, kReceive);  // else the defaults
  return {session, [](HINTERNET handle) { (void)WinHttpCloseHandle(handle); }};
}

}  // namespace

SharedInternetHandle SharedSession() {
  const MutexLock lock(SessionLock);
  if (Session == nullptr) {
    Session = OpenSession();
  }
  return Session;
}

bool HttpRequest(const std::wstring& method, const std::wstring& url,
                 const std::wstring& authorization, const std::string& body,
                 const std::wstring& contentType, std::string& response, std::wstring& error,
                 const wchar_t* userAgent, DWORD* statusOut) {
  if (statusOut != nullptr) {
    *statusOut = 0;
  }
  UrlParts parts;
  if (!CrackUrl(url, parts)) {
    error = L"面板地址无效";
    return false;
  }
  const SharedInternetHandle session = SharedSession();
  if (session == nullptr) {
    error = L"无法初始化网络请求";
    return false;
  }
  const InternetHandle connection(WinHttpConnect(session.get(), parts.host.data(), parts.port, 0));
  const DWORD connectError = GetLastError();
  if (!connection) {
    return FailTransport(connectError, error, statusOut);
  }
  const InternetHandle request(WinHttpOpenRequest(
      connection.get(), method.c_str(), parts.path.data(), nullptr, WINHTTP_NO_REFERER,
      WINHTTP_DEFAULT_ACCEPT_TYPES, parts.secure ? WINHTTP_FLAG_SECURE : 0));
  if (!request) {
    error = L"无法创建面板请求";
    return false;
  }
  DWORD sendError = 0;
  if (!Send(request.get(), HeaderBlock(userAgent, !body.empty(), contentType, authorization), body,
            sendError)) {
    return FailTransport(sendError, error, statusOut);
  }
  DWORD status = 0;
  if (QueryStatus(request.get(), status) && statusOut != nullptr) {
    *statusOut = status;
  }
  response = ReadBody(request.get());
  if (status >= 400) {
    error = L"面板 HTTP " + std::to_wstring(status);
    return false;
  }
  return true;
}

std::wstring HttpErrorText(DWORD code) {
  switch (code) {
    case ERROR_WINHTTP_TIMEOUT:
      return L"连接面板超时。请检查网络，或稍后再试。";
    case ERROR_WINHTTP_NAME_NOT_RESOLVED:
      return L"无法解析面板域名。请检查网络或 DNS。";
    case ERROR_WINHTTP_LOGIN_FAILURE:
      return L"面板拒绝了这次登录请求。";
    case ERROR_WINHTTP_OPERATION_CANCELLED:
      return L"面板请求已取消。";
    case ERROR_WINHTTP_CANNOT_CONNECT:
      return L"无法连上面板服务器。";
    case ERROR_WINHTTP_CONNECTION_ERROR:
      return L"与面板的连接被中断。";
    case ERROR_WINHTTP_RESEND_REQUEST:
      return L"面板要求重新发送请求，请再试一次。";
    case ERROR_WINHTTP_INVALID_SERVER_RESPONSE:
      return L"面板返回了无法识别的内容。";
    case ERROR_WINHTTP_SECURE_CHANNEL_ERROR:
    case ERROR_WINHTTP_SECURE_FAILURE:
      return L"面板安全连接失败（证书或加密通道）。";
    default:
      return L"无法连接面板。";
  }
}

}  // namespace vpn
