// The generated configuration: whatever the node holds, it is the fixed template with the node's
// values in their places. The input is a line for each value.
#include "src/xrayconf/xray_config.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/fuzz/fuzz.h"

using fuzz::Require;
using nlohmann::json;

namespace {

struct Input {
  vpn::NodeInfo node;
  std::wstring alias;
  std::wstring path;
};

Input ReadInput(std::string_view text) {
  const auto line = [&text] { return fuzz::Wide(fuzz::TakeUntil(text, '\n')); };
  Input input;
  const std::string port(fuzz::TakeUntil(text, '\n'));
  input.node.port = static_cast<std::int32_t>(std::strtoll(port.c_str(), nullptr, 10));
  for (std::wstring* field :
       {&input.node.address, &input.node.uuid, &input.node.flow, &input.node.sni,
        &input.node.fingerprint, &input.node.publicKey, &input.node.shortId, &input.alias}) {
    *field = line();
  }
  constexpr std::array<const wchar_t*, 4> kPaths = {
      L"C:\\run\\session.json.xray.json", L"C:/run/x.json", L"x.json", L"C:\\no\\such\\x.json"};
  input.path = kPaths[text.size() % kPaths.size()];
  return input;
}

// Control bytes pass as they are into the file, where a strict parser refuses them. Within strings,
// and only there, they are escaped here; so a value that breaks out of its quotes is noticed.
std::string EscapeControlBytes(const std::string& text) {
  std::string escaped;
  bool quoted = false;
  for (size_t at = 0; at < text.size(); ++at) {
    const char byte = text[at];
    if (quoted && byte == '\\') {
      escaped += byte;
      escaped += text[++at];
    } else if (quoted && static_cast<unsigned char>(byte) < 0x20) {
      std::array<char, 8> unit{};
      std::snprintf(unit.data(), unit.size(), "\\u%04x", static_cast<unsigned>(byte));
      escaped += unit.data();
    } else {
      quoted = byte == '"' ? !quoted : quoted;
      escaped += byte;
    }
  }
  return escaped;
}

json Generate(sim::Machine& machine, const Input& input) {
  std::wstring error;
  if (!vpn::GenerateXrayConfig(input.node, input.alias, input.path, error)) {
    Require(error == L"cannot write generated xray config", "only the opening can fail");
    Require(input.path == L"C:\\no\\such\\x.json", "where there is a directory the file opens");
    return {};
  }
  const auto file = machine.files.Read(input.path);
  json parsed = json::parse(EscapeControlBytes(file.value_or("")), nullptr, false);
  Require(!parsed.is_discarded(), "the file parses");
  return parsed;
}

json DirectRule(const char* matcher, const std::string& value) {
  return {{"type", "field"}, {matcher, {value}}, {"outboundTag", "direct"}};
}

bool IsLiteral(const std::string& address) {
  const bool dotted = address.find_first_not_of("0123456789.") == std::string::npos &&
                      std::count(address.begin(), address.end(), '.') == 3;
  return dotted || address.find(':') != std::string::npos;
}

// What a look-up of the name gives; the product looks up the escaped text, up to its first NUL.
std::string Resolved(sim::Machine& machine, const std::string& address) {
  std::string name;
  for (size_t at = 0; at < address.size() && address[at] != '\0'; ++at) {
    name += address[at] == '"' || address[at] == '\\' ? "\\" : "";
    name += address[at];
  }
  const sim::HostEntry entry = machine.names.Find(name);
  return entry.error == 0 && !entry.ipv4.empty() ? entry.ipv4.front() : "";
}

// Replaces everything in the plain node's configuration that comes from a node.
json Wanted(sim::Machine& machine, json plain, const Input& input) {
  const std::string address = fuzz::Utf8(input.node.address);
  const std::string resolved = IsLiteral(address) ? "" : Resolved(machine, address);
  json& proxy = plain["outbounds"][0];
  json& server = proxy["settings"]["vnext"][0];
  server["address"] = resolved.empty() ? address : resolved;
  server["port"] = input.node.port;
  server["users"][0]["id"] = fuzz::Utf8(input.node.uuid);
  server["users"][0]["flow"] = fuzz::Utf8(input.node.flow);
  proxy["streamSettings"]["realitySettings"] = {{"serverName", fuzz::Utf8(input.node.sni)},
                                                {"fingerprint", fuzz::Utf8(input.node.fingerprint)},
                                                {"publicKey", fuzz::Utf8(input.node.publicKey)},
                                                {"shortId", fuzz::Utf8(input.node.shortId)}};
  for (json* outbound : {&proxy, &plain["outbounds"][1]}) {
    (*outbound)["streamSettings"]["sockopt"]["interface"] = fuzz::Utf8(input.alias);
  }
  json& rules = plain["routing"]["rules"];
  constexpr int kNodeRule = 8;
  rules[kNodeRule] =
      IsLiteral(address) ? DirectRule("ip", address) : DirectRule("domain", "full:" + address);
  if (!resolved.empty() && resolved != address) {
    rules.insert(rules.begin() + kNodeRule + 1, DirectRule("ip", resolved));
  }
  const size_t separator = input.path.find_last_of(L"\\/");
  plain["log"]["error"] = fuzz::Utf8(input.path.substr(0, separator + 1)) + "xray-error.log";
  return plain;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static fuzz::SharedMachine shared;
  sim::Machine& machine = shared.Get([](sim::Machine& fresh) {
    fresh.files.PutDirectory(L"C:\\run");
    (void)SetCurrentDirectoryW(L"C:\\run");
    fresh.names.Set("node.example", {"203.0.113.9", "203.0.113.10"});
  });
  static const json plain =
      Generate(machine, ReadInput("443\n198.51.100.1\nid\nf\ns\nc\nk\n01\nEth"));
  const Input input = ReadInput(fuzz::Bytes(data, size));
  const json generated = Generate(machine, input);
  Require(generated.is_null() || generated == Wanted(machine, plain, input),
          "the file is the template with the node's values");
  return 0;
}
