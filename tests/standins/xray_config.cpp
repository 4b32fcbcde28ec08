#include "tests/standins/xray_config.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include <nlohmann/json.hpp>

namespace standins {
namespace {

using nlohmann::json;

void Require(bool condition, const char* complaint) {
  if (!condition) throw std::runtime_error(complaint);
}

std::uint16_t PortOf(const json& value) {
  Require(value.is_number_integer(), "a port is a number");
  const auto number = value.get<std::int64_t>();
  Require(number >= 0 && number <= 65535, "invalid port range");
  return static_cast<std::uint16_t>(number);
}

bool IsUrlBase64(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](unsigned char c) { return std::isalnum(c) != 0 || c == '-' || c == '_'; });
}

bool IsHex(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](unsigned char c) { return isxdigit(c) != 0; });
}

// 32 bytes in base64 without padding make 43 characters.
void CheckReality(const json& reality) {
  const auto key = reality.at("publicKey").get<std::string>();
  Require(key.size() == 43 && IsUrlBase64(key), "invalid \"publicKey\"");
  const auto shortId = reality.at("shortId").get<std::string>();
  Require(shortId.size() <= 16 && shortId.size() % 2 == 0 && IsHex(shortId), "invalid \"shortId\"");
  Require(!reality.at("fingerprint").get<std::string>().empty(), "empty \"fingerprint\"");
}

void CheckProxy(const json& outbound) {
  const json& server = outbound.at("settings").at("vnext").at(0);
  Require(!server.at("address").get<std::string>().empty(), "empty server address");
  PortOf(server.at("port"));
  const json& user = server.at("users").at(0);
  Require(!user.at("id").get<std::string>().empty(), "empty user id");
  Require(user.at("encryption") == "none", "please add/set \"encryption\":\"none\"");
  CheckReality(outbound.at("streamSettings").at("realitySettings"));
}

}  // namespace

XrayConfig ReadXrayConfig(const std::string& text) {
  const json root = json::parse(text);
  CheckProxy(root.at("outbounds").at(0));
  const json& inbound = root.at("inbounds").at(0);
  XrayConfig config;
  config.listen = inbound.at("listen").get<std::string>();
  config.port = PortOf(inbound.at("port"));
  config.errorLog = root.at("log").value("error", "");
  return config;
}

}  // namespace standins
