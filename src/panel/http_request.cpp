#include "src/panel/http_request.h"

#include <array>
#include <optional>
#include <utility>

#include "src/common/unique_handle.h"
#include "src/panel/http_session.h"

namespace vpn {
namespace {

struct InternetHandleTraits {
  using Type = HINTERNET;
  static Type Empty() { return nullptr; }
  static bool IsValid(Type value) { return value != nullptr; }
  static void Close(Type value) { (void)WinHttpCloseHandle(value); }
};
using InternetHandle = UniqueHandle<InternetHandleTraits>;

struct UrlParts {
  std::array<wchar_t, 256> host{};
  std::array<wchar_t, 2048> path{};  // the query stays on it
  INTERNET_PORT port = 0;
  bool secure = false;
};

std::optional<UrlParts> CrackUrl(const std::wstring& url) {
  UrlParts parts;
  URL_COMPONENTS components = {};
  components.dwStructSize = sizeof(components);
  components.lpszHostName = parts.host.data();
  components.dwHostNameLength = static_cast<DWORD>(parts.host.size());
  components.lpszUrlPath = parts.path.data();
  components.dwUrlPathLength = static_cast<DWORD>(parts.path.size());
  if (WinHttpCrackUrl(url.c_str(), 0, 0, &components) == FALSE) {
    return std::nullopt;
  }
  parts.port = components.nPort;
  parts.secure = components.nScheme == INTERNET_SCHEME_HTTPS;
  return parts;
}

// The credential goes out under both names that panels have been seen to use.
std::wstring HeaderBlock(const HttpRequest& request) {
  std::wstring block = L"Accept: application/json\r\nUser-Agent: ";
  block += (request.userAgent.empty() ? kUserAgent : request.userAgent) + L"\r\n";
  if (!request.body.empty()) {
    block += L"Content-Type: " + request.contentType + L"\r\n";
  }
  if (!request.credential.empty()) {
    block +=
        L"Authorization: " + request.credential + L"\r\nauth_data: " + request.credential + L"\r\n";
  }
  return block;
}

// True when an answer has begun to arrive, else the platform's last error tells why not.
bool Send(HINTERNET request, const std::wstring& headers, const std::string& body) {
  void* const data = body.empty() ? WINHTTP_NO_REQUEST_DATA : const_cast<char*>(body.data());
  const auto size = static_cast<DWORD>(body.size());
  constexpr auto kAutomatic = static_cast<DWORD>(-1);
  return WinHttpSendRequest(request, headers.c_str(), kAutomatic, data, size, size, 0) != FALSE &&
         WinHttpReceiveResponse(request, nullptr) != FALSE;
}

// 0 when it can't be read.
DWORD QueryStatus(HINTERNET request) {
  DWORD status = 0;
  DWORD size = sizeof(status);
  const BOOL found =
      WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                          WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX);
  return found == FALSE ? 0 : status;
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

HttpReply ReadReply(HINTERNET request) {
  HttpReply reply;
  reply.answered = true;
  reply.status = QueryStatus(request);
  reply.body = ReadBody(request);
  if (reply.status >= 400) {
    reply.error = L"面板 HTTP " + std::to_wstring(reply.status);
  }
  return reply;
}

// The user's text for a WinHTTP error code (winhttp.h).
const wchar_t* HttpErrorText(DWORD code) {
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

HttpReply Failure(const wchar_t* text, DWORD code = 0) {
  HttpReply reply;
  reply.status = code;
  reply.error = text;
  return reply;
}

HttpReply TransportFailure(DWORD code) {
  return Failure(HttpErrorText(code), code);
}

}  // namespace

HttpReply SendHttpRequest(const HttpRequest& request) {
  const std::optional<UrlParts> parts = CrackUrl(request.url);
  if (!parts) {
    return Failure(L"面板地址无效");
  }
  const SharedInternetHandle session = SharedHttpSession();
  if (session == nullptr) {
    return Failure(L"无法初始化网络请求");
  }
  const InternetHandle connection(
      WinHttpConnect(session.get(), parts->host.data(), parts->port, 0));
  const DWORD connectError = GetLastError();
  if (!connection) {
    return TransportFailure(connectError);
  }
  const InternetHandle handle(WinHttpOpenRequest(
      connection.get(), request.method.c_str(), parts->path.data(), nullptr, WINHTTP_NO_REFERER,
      WINHTTP_DEFAULT_ACCEPT_TYPES, parts->secure ? WINHTTP_FLAG_SECURE : 0));
  if (!handle) {
    return Failure(L"无法创建面板请求");
  }
  const std::wstring headers = HeaderBlock(request);
  if (!Send(handle.get(), headers, request.body)) {
    return TransportFailure(GetLastError());
  }
  return ReadReply(handle.get());
}

}  // namespace vpn
