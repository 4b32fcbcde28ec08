// node_configuration [FIELD=VALUE]...: prints the configuration that the product generates for a
// node, with the loopback's name in the place of the physical interface's. The fields that no
// argument sets are those of a usable node.
#include <algorithm>
#include <cstdio>
#include <map>
#include <string>

#include "src/xrayconf/xray_config.h"
#include "tests/sim/machine.h"
#include "tests/sim/text.h"

namespace {

constexpr wchar_t kFile[] = L"C:\\run\\session.json.xray.json";

vpn::NodeInfo UsableNode() {
  vpn::NodeInfo node;
  node.address = L"203.0.113.9";
  node.port = 443;
  node.uuid = L"7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11";
  node.sni = L"www.site.example";
  node.publicKey = L"Zm9yLXRlc3RzLW9ubHktbm90LWEtcmVhbC1rZXktISE";
  node.shortId = L"0123456789abcdef";
  return node;
}

// False for a field that a node does not have.
bool Set(vpn::NodeInfo& node, const std::string& field, const std::string& value) {
  const std::map<std::string, std::wstring*> texts = {
      {"address", &node.address},         {"uuid", &node.uuid}, {"flow", &node.flow},
      {"fingerprint", &node.fingerprint}, {"sni", &node.sni},   {"publicKey", &node.publicKey},
      {"shortId", &node.shortId}};
  if (field == "port") {
    node.port = std::stoi(value);
    return true;
  }
  const auto text = texts.find(field);
  if (text == texts.end()) {
    return false;
  }
  *text->second = sim::Widen(value);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const sim::InstalledMachine machine;
  machine->files.PutDirectory(L"C:\\run");
  vpn::NodeInfo node = UsableNode();
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const size_t equals = std::min(argument.find('='), argument.size() - 1);
    if (!Set(node, argument.substr(0, equals), argument.substr(equals + 1))) {
      std::fprintf(stderr, "a node has no field as in %s\n", argv[i]);
      return 2;
    }
  }
  if (!vpn::GenerateXrayConfig(node, L"lo", kFile)) {
    return 1;
  }
  const std::string text = machine->files.Read(kFile).value_or("");
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : 1;
}
