#include "src/panel/panel_client.h"

#include <array>
#include <optional>
#include <utility>

#include "src/common/mutex.h"
#include "src/common/number_text.h"
#include "src/common/unique_handle.h"

namespace vpn {
namespace {

struct InternetHandleTraits : NullIsEmpty<HINTERNET> {
  static void close(HINTERNET value) { (void)WinHttpCloseHandle(value); }
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
std::wstring HeaderBlock(const PanelClient& client, bool hasBody, const std::wstring& contentType) {
  std::wstring block = L"Accept: application/json\r\nUser-Agent: ";
  block += (client.userAgent.empty() ? kUserAgent : client.userAgent) + L"\r\n";
  if (hasBody) {
    block += L"Content-Type: " + contentType + L"\r\n";
  }
  if (!client.credential.empty()) {
    block +=
        L"Authorization: " + client.credential + L"\r\nauth_data: " + client.credential + L"\r\n";
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

PanelReply ReadReply(HINTERNET request) {
  PanelReply reply = {.answered = true, .status = QueryStatus(request), .body = ReadBody(request)};
  if (reply.status >= 400) {
    reply.error = L"面板 HTTP " + DecimalText(reply.status);
  }
  return reply;
}

constexpr std::pair<DWORD, const wchar_t*> kErrorTexts[] = {
    {ERROR_WINHTTP_TIMEOUT, L"连接面板超时。请检查网络，或稍后再试。"},
    {ERROR_WINHTTP_NAME_NOT_RESOLVED, L"无法解析面板域名。请检查网络或 DNS。"},
    {ERROR_WINHTTP_LOGIN_FAILURE, L"面板拒绝了这次登录请求。"},
    {ERROR_WINHTTP_OPERATION_CANCELLED, L"面板请求已取消。"},
    {ERROR_WINHTTP_CANNOT_CONNECT, L"无法连上面板服务器。"},
    {ERROR_WINHTTP_CONNECTION_ERROR, L"与面板的连接被中断。"},
    {ERROR_WINHTTP_RESEND_REQUEST, L"面板要求重新发送请求，请再试一次。"},
    {ERROR_WINHTTP_INVALID_SERVER_RESPONSE, L"面板返回了无法识别的内容。"},
    {ERROR_WINHTTP_SECURE_CHANNEL_ERROR, L"面板安全连接失败（证书或加密通道）。"},
    {ERROR_WINHTTP_SECURE_FAILURE, L"面板安全连接失败（证书或加密通道）。"}};

PanelReply TransportFailure(DWORD code) {
  for (const auto& [known, text] : kErrorTexts) {
    if (known == code) {
      return {.status = code, .error = text};
    }
  }
  return {.status = code, .error = L"无法连接面板。"};
}

// Guards the creation and the copying of the session.
Mutex g_httpSessionLock;

// Never destroyed: a fetch may still run while the process exits.
SharedInternetHandle& g_httpSession VPN_GUARDED_BY(g_httpSessionLock) = *new SharedInternetHandle;

SharedInternetHandle OpenHttpSession() {
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

SharedInternetHandle SharedHttpSession() {
  const MutexLock lock(g_httpSessionLock);
  if (g_httpSession == nullptr) {
    g_httpSession = OpenHttpSession();
  }
  return g_httpSession;
}

PanelReply PanelClient::get(const std::wstring& path) const {
  return send(L"GET", path, "", L"");
}

PanelReply PanelClient::post(const std::wstring& path, const std::string& body,
                             const wchar_t* contentType) const {
  return send(L"POST", path, body, contentType);
}

PanelReply PanelClient::send(const wchar_t* method, const std::wstring& path,
                             const std::string& body, const wchar_t* contentType) const {
  const std::optional<UrlParts> parts = CrackUrl(base + path);
  if (!parts) {
    return {.error = L"面板地址无效"};
  }
  const SharedInternetHandle session = SharedHttpSession();
  if (session == nullptr) {
    return {.error = L"无法初始化网络请求"};
  }
  const InternetHandle connection(
      WinHttpConnect(session.get(), parts->host.data(), parts->port, 0));
  const DWORD connectError = GetLastError();
  if (!connection) {
    return TransportFailure(connectError);
  }
  const InternetHandle handle(
      WinHttpOpenRequest(connection.get(), method, parts->path.data(), nullptr, WINHTTP_NO_REFERER,
                         WINHTTP_DEFAULT_ACCEPT_TYPES, parts->secure ? WINHTTP_FLAG_SECURE : 0));
  if (!handle) {
    return {.error = L"无法创建面板请求"};
  }
  const std::wstring headers = HeaderBlock(*this, !body.empty(), contentType);
  if (!Send(handle.get(), headers, body)) {
    return TransportFailure(GetLastError());
  }
  return ReadReply(handle.get());
}

}  // namespace vpn
