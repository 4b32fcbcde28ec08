#include "src/panel/endpoints.h"

#include <algorithm>

#include "src/common/environment.h"
#include "src/common/files.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

constexpr size_t kNone = std::wstring::npos;

// Without a port at its end: digits, at least one, behind the last colon.
std::wstring CutPort(const std::wstring& host) {
  const size_t colon = host.rfind(L':');
  if (colon == kNone || colon + 1 == host.size() ||
      host.find_first_not_of(L"0123456789", colon + 1) != kNone) {
    return host;
  }
  return host.substr(0, colon);
}

}  // namespace

PanelEndpoints ReadPanelEndpoints(const std::wstring& runtimeDir) {
  std::string text;
  if (!ReadFileBytes(runtimeDir + L'\\' + kPanelFile, text)) {
    return {};
  }
  const auto read = [&](const char* key) { return Utf8ToWide(JsonString(text, key)); };
  return {read("apiBase"), read("deviceApi"), read("inviteBase"), read("updateUrl"),
          read("downloadHost")};
}

std::wstring PanelUrlFromEnvironment() {
  return ReadEnvironment(L"TAVRIN_XBOARD_URL", 512).value_or(L"");
}

std::vector<std::wstring> CollectPanelHosts(const std::wstring& runtimeDir) {
  const PanelEndpoints endpoints = ReadPanelEndpoints(runtimeDir);
  std::vector<std::wstring> hosts;
  // Invite links are opened by others, so their host is not among them.
  for (const std::wstring& url : {endpoints.apiBase, endpoints.deviceApi, endpoints.updateUrl,
                                  endpoints.downloadHost, PanelUrlFromEnvironment()}) {
    const std::wstring host = UrlHost(url);
    if (!host.empty()) {
      hosts.push_back(host);
    }
  }
  std::sort(hosts.begin(), hosts.end());
  hosts.erase(std::unique(hosts.begin(), hosts.end()), hosts.end());
  return hosts;
}

std::wstring TrimEndSlashes(std::wstring text) {
  text.erase(text.find_last_not_of(L"/\\") + 1);
  return text;
}

std::wstring UrlHost(const std::wstring& url) {
  const size_t scheme = url.find(L"://");
  std::wstring host = scheme == kNone ? url : url.substr(scheme + 3);
  host = host.substr(0, host.find_first_of(L"/\\?"));
  host = host.substr(host.rfind(L'@') + 1);  // npos + 1 is 0
  if (host.starts_with(L'[')) {
    const size_t close = host.find(L']');
    return close == kNone ? std::wstring() : host.substr(1, close - 1);
  }
  return CutPort(host);
}

}  // namespace vpn
