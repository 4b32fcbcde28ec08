// The subscription: the user's nodes as links, in one unbroken line of base64.
#include <openssl/evp.h>

#include <cctype>

#include "tests/panel/endpoints.h"

namespace panel {
namespace {

// As in a form: a blank becomes a plus sign.
std::string FormEncode(const std::string& text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80 && (std::isalnum(byte) != 0 || c == '-' || c == '_' || c == '.')) {
      encoded += c;
    } else if (c == ' ') {
      encoded += '+';
    } else {
      encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return encoded;
}

// A null is left out, an empty text stands.
std::string Parameter(const char* name, const Json& value) {
  if (value.is_null()) return "";
  return std::string("&") + name + "=" + FormEncode(value.get<std::string>());
}

std::string Link(const Json& node, const std::string& uuid, const std::string& name) {
  std::string link = "vless://" + uuid + "@" + node.at("host").get<std::string>() + ":" +
                     std::to_string(node.at("port").get<int>()) +
                     "?mode=multi&security=reality&encryption=none&type=tcp";
  link += Parameter("flow", node.at("flow")) + Parameter("pbk", node.at("public_key")) +
          Parameter("sid", node.at("short_id")) + Parameter("sni", node.at("server_name")) +
          Parameter("servername", node.at("server_name")) + "&spx=%2F" +
          Parameter("fp", node.at("fingerprint"));
  return link + "#" + FormEncode(name) + "\r\n";
}

std::string Base64(const std::string& bytes) {
  std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
  text.resize(static_cast<std::size_t>(EVP_EncodeBlock(
      reinterpret_cast<unsigned char*>(text.data()),
      reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()))));
  return text;
}

}  // namespace

// To be fetched with the token alone, by clients that carry no other credential.
Reply ClientSubscribe(Call& call) {
  const Json* const user = FindBy(call.state["users"], "token", call.Text("token"));
  if (user == nullptr) return Refusal(call.state, 403, "token is error");
  if (!IsAvailable(*user)) {
    return {call.state["family"] == "xboard" ? 403 : 200, "text/html; charset=UTF-8", ""};
  }
  const std::string uuid = user->at("uuid");
  const Json& nodes = call.state["nodes"];
  std::string links;
  if (call.state["noticeNodes"] == true && !nodes.empty()) {
    for (const char* notice :
         {"剩余流量：189.8 GB", "距离下次重置剩余：12 天", "套餐到期：2099-06-15"}) {
      links += Link(nodes[0], uuid, notice);
    }
  }
  for (const Json& node : nodes) links += Link(node, uuid, node.at("name"));
  return {200, "text/plain; charset=UTF-8", Base64(links)};
}

}  // namespace panel
