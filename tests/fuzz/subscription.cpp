// Subscriptions and the links in them. The input is a subscription as a panel sends it.
#include "src/panel/subscription.h"

#include <algorithm>
#include <array>

#include "src/common/text.h"
#include "src/panel/subscription_internal.h"
#include "tests/fuzz/fuzz.h"

using fuzz::Require;

namespace {

using Nodes = std::vector<vpn::NodeInfo>;

Nodes Parse(const std::string& text) {
  Nodes nodes;
  vpn::ParseSubscription(text, nodes);
  return nodes;
}

bool IsSame(const vpn::NodeInfo& a, const vpn::NodeInfo& b) {
  return a.name == b.name && a.address == b.address && a.port == b.port && a.uuid == b.uuid &&
         a.flow == b.flow && a.sni == b.sni && a.fingerprint == b.fingerprint &&
         a.publicKey == b.publicKey && a.shortId == b.shortId;
}

bool AreSame(const Nodes& a, const Nodes& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), IsSame);
}

void CheckNodes(const Nodes& nodes) {
  for (const vpn::NodeInfo& node : nodes) {
    Require(!node.address.empty() && !node.uuid.empty() && !node.publicKey.empty() && node.port > 0,
            "a node has an address, a port, an id and a key");
    Require(!node.name.empty() && !node.flow.empty() && !node.fingerprint.empty(),
            "name, flow and fingerprint have their defaults");
    for (const wchar_t* marker : {L"剩余流量", L"套餐到期", L"距离下次", L"过滤掉"}) {
      Require(node.name.find(marker) == std::wstring::npos, "notices are no nodes");
    }
  }
}

// Behind a line that opens with a link no text is base64.
std::string Plain(const std::string& text) {
  return "vless://\n" + text;
}

void CheckBase64(const std::string& text) {
  Require(AreSame(Parse(fuzz::Base64(Plain(text))), Parse(Plain(text))), "base64 changes nothing");
}

void CheckLines(const std::string& text) {
  const std::string front = Plain(text.substr(0, text.size() / 2));
  const std::string back = Plain(text.substr(text.size() / 2));
  Nodes joined = Parse(front);
  vpn::ParseSubscription(back, joined);
  Require(AreSame(Parse(front + "\r\n" + back), joined), "lines stand for themselves, in order");
}

void CheckCoding(const std::string& text) {
  const std::string encoded = fuzz::PercentEncode(text);
  Require(vpn::PercentDecode(encoded) == text, "what was encoded reads back");
  Require(vpn::PercentDecode(text).size() <= text.size(), "decoding makes nothing longer");
  Require(vpn::QueryParam("x&k=" + encoded + "&k=other", "k") == text, "the first pair counts");
  Require(vpn::QueryParam("k%3D=1&=2&" + fuzz::PercentEncode("k") + "=3", "k") == "3",
          "keys are decoded too");
  Require(text.empty() || vpn::DecodeBase64(fuzz::Base64(text)) == text, "base64 reads back");
}

// A link that is put together from one text reads back in each of its places.
void CheckLink(const std::string& text) {
  const std::string value = fuzz::PercentEncode(text);
  std::string line = "vless://a@b@[2001:db8::1]:8443?type=tcp&flow=" + value +
                     "&sni=&servername=" + value + "&fp=" + value + "&pbk=" + value +
                     "&sid=" + value + "#" + value + " \r\n";
  const std::optional<vpn::NodeInfo> node = vpn::ParseVlessLink(line);
  if (!node) {
    Require(text.empty(), "only the lack of a key can refuse this link");
    return;
  }
  const std::wstring wide = vpn::Utf8ToWide(text);
  Require(node->name == wide && node->flow == wide && node->sni == wide &&
              node->fingerprint == wide && node->publicKey == wide && node->shortId == wide,
          "every value reads back");
  Require(node->address == L"2001:db8::1" && node->port == 8443 && node->uuid == L"a@b",
          "id, host and port are read by their marks");
  Require(line.ends_with(value), "the line's end is trimmed");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static fuzz::SharedMachine machine;
  (void)machine.Get([](sim::Machine&) {});
  const std::string text(fuzz::Bytes(data, size));
  CheckNodes(Parse(text));
  // One of the dearer questions each time; the fuzzer comes back with every length.
  constexpr std::array kQuestions = {CheckBase64, CheckLines, CheckCoding, CheckLink};
  kQuestions[size % kQuestions.size()](text);
  return 0;
}
