#include "client/cli/version_text.h"

#include "client/json/json_text.h"
#include "src/common/deployment.h"
#include "src/common/text.h"

namespace vpn {

std::wstring VersionText(bool json) {
  if (!json) {
    return std::wstring(L"tavrinctl ") + kProductVersion + L"\n";
  }
  Json object = NewJson();
  PutText(object, "version", kProductVersion);
  PutUtf8(object, "panelDomain", kPanelDomain);
  PutText(object, "defaultNodeAddress", kDefaultNodeAddress);
  PutText(object, "paymentNotifyUrl", kPaymentNotifyUrl);
  Json& domains = PutList(object, "proxyDomains");
  for (const char* domain : kProxyDomains) {
    AppendText(domains, Utf8ToWide(domain));
  }
  return JsonText(object);
}

}  // namespace vpn
