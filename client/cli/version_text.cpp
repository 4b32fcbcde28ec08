#include "client/cli/version_text.h"

#include "client/json/json_text.h"
#include "src/common/deployment.h"

namespace vpn {

std::wstring VersionText(bool json) {
  if (!json) {
    return std::wstring(L"tavrinctl ") + kProductVersion + L"\n";
  }
  Json object = NewJson();
  object["version"] = JsonValue(kProductVersion);
  object["panelDomain"] = kPanelDomain;
  object["defaultNodeAddress"] = JsonValue(kDefaultNodeAddress);
  object["paymentNotifyUrl"] = JsonValue(kPaymentNotifyUrl);
  Json& domains = object["proxyDomains"];
  for (const char* domain : kProxyDomains) {
    domains.push_back(domain);
  }
  return JsonText(object);
}

}  // namespace vpn
