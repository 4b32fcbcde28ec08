#include "src/xrayconf/xray_config.h"

#include "src/common/deployment.h"
#include "src/common/environment.h"
#include "src/common/files.h"
#include "src/common/text.h"
#include "src/net/host_resolve.h"
#include "src/runtime/runtime_files.h"
#include "src/xrayconf/xray_config_internal.h"
#include "src/xrayconf/xray_template.h"

namespace vpn {
namespace {

std::string DirectRule(const std::string& matcher) {
  return R"(      { "type": "field", )" + matcher + R"(, "outboundTag": "direct" },)" + '\n';
}

// They keep the connection to the node itself off the tunnel: the node as given, and its address
// when that had to be looked up.
std::string NodeDirectRules(const std::string& address, const std::string& outboundAddress) {
  const bool isLiteral = IsIpLiteral(address);
  std::string rules = DirectRule(isLiteral ? R"("ip": [")" + address + R"("])"
                                           : R"("domain": ["full:)" + address + R"("])");
  if (IsIpLiteral(outboundAddress) && outboundAddress != address) {
    rules += DirectRule(R"("ip": [")" + outboundAddress + R"("])");
  }
  return rules;
}

// The node's address, or its first IPv4 address. A host name that does not resolve stays, and Xray
// resolves it later.
std::string OutboundAddress(const std::string& address) {
  const std::string resolved = IsIpLiteral(address) ? "" : ResolveFirstIpv4(address);
  return resolved.empty() ? address : resolved;
}

std::wstring ErrorLogPath(const std::wstring& configPath) {
  const size_t separator = LastSeparator(configPath);
  const std::wstring directory =
      separator == std::wstring::npos ? L"" : configPath.substr(0, separator + 1);
  return directory + kXrayErrorLog;
}

std::string ProxyDomains() {
  std::string list;
  for (const char* domain : kProxyDomains) {
    list += list.empty() ? R"("domain:)" : R"(, "domain:)";
    list += domain;
    list += '"';
  }
  return list;
}

}  // namespace

std::string ToJsonUtf8(const std::wstring& text) {
  return EscapeQuotes(WideToUtf8(text));
}

bool IsIpLiteral(std::string_view text) {
  return text.find(':') != std::string_view::npos || IsIpv4Literal(text);
}

Status GenerateXrayConfig(const NodeInfo& node, const std::wstring& interfaceAlias,
                          const std::wstring& configPath) {
  const std::string address = ToJsonUtf8(node.address);
  const std::string outboundAddress = OutboundAddress(address);
  const std::string text =
      FillTemplate(kXrayTemplate, {{"errorLog", ToJsonUtf8(ErrorLogPath(configPath))},
                                   {"panelDomain", kPanelDomain},
                                   {"socksPort", std::to_string(kSocksPort)},
                                   {"outboundAddress", outboundAddress},
                                   {"port", std::to_string(node.port)},
                                   {"uuid", ToJsonUtf8(node.uuid)},
                                   {"flow", ToJsonUtf8(node.flow)},
                                   {"sni", ToJsonUtf8(node.sni)},
                                   {"fingerprint", ToJsonUtf8(node.fingerprint)},
                                   {"publicKey", ToJsonUtf8(node.publicKey)},
                                   {"shortId", ToJsonUtf8(node.shortId)},
                                   {"interfaceAlias", ToJsonUtf8(interfaceAlias)},
                                   {"proxyDomains", ProxyDomains()},
                                   {"nodeDirectRules", NodeDirectRules(address, outboundAddress)}});
  if (!WriteFileBytes(configPath, text)) {
    return Status::failure(L"cannot write generated xray config");
  }
  return Status::success();
}

}  // namespace vpn
