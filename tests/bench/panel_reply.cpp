#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <simdjson.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "src/common/text.h"
#include "src/panel/account_reply.h"
#include "src/panel/json_reader.h"
#include "tests/bench/figures.h"

namespace bench {
namespace {

using Nodes = std::vector<vpn::NodeInfo>;

constexpr wchar_t kUuid[] = L"7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11";

// Rows as panels write them: no blanks, everything outside ASCII escaped, and so is each slash.
std::string ServerList(std::size_t size, int firstId) {
  std::string body = R"({"data":[)";
  for (int id = firstId; body.size() < size; ++id) {
    const std::string number = std::to_string(id);
    body += (id > firstId ? R"(,{"id":)" : R"({"id":)") + number +
            R"(,"group_id":["1"],"route_id":null,"name":"\u9999\u6e2f )" + number +
            R"(","parent_id":null,"host":"n)" + number +
            R"(.node.example","port":"443","server_port":443,"tls":2,"tls_settings":)"
            R"({"server_name":"www.site.example",)"
            R"("public_key":"K3yAbcdefghijklmnopqrstuvwxyz0123456789-_ABC",)"
            R"("short_id":"01ab","fingerprint":"chrome"},"flow":"xtls-rprx-vision",)"
            R"("network":"tcp","rate":"1","type":"vless","last_check_at":1760000000,)"
            R"("tags":["IEPL","5\/5"],"is_online":1})";
  }
  return body + "]}";
}

// Replies of one size, read in turn. A processor learns the branches of a short one that is read
// again and again, and would be faster with it than with any that comes from a panel.
class Replies {
 public:
  explicit Replies(std::size_t size) {
    const std::size_t count = std::max<std::size_t>(1, kTogether / size);
    for (std::size_t i = 0; i < count; ++i) {
      bodies_.push_back(ServerList(size, 1'000'000 + static_cast<int>(i) * 1000));
    }
  }

  const std::string& First() const { return bodies_.front(); }
  const std::string& At(std::size_t turn) const { return bodies_[turn % bodies_.size()]; }

 private:
  static constexpr std::size_t kTogether = 1 << 18;
  std::vector<std::string> bodies_;
};
using SharedReplies = std::shared_ptr<const Replies>;

Nodes ByService(const std::string& body) {
  return vpn::NodesFromServers(vpn::JsonObjectArray(body, "data"), kUuid);
}

// What the three parsers have in common once a row's fields are found.
template <class Text>
vpn::NodeInfo MakeNode(const Text& text, std::int32_t port) {
  vpn::NodeInfo node;
  node.name = vpn::Utf8ToWide(text("name"));
  node.address = vpn::Utf8ToWide(text("host"));
  node.port = port;
  node.uuid = kUuid;
  vpn::AssignIfGiven(text("flow"), node.flow);
  node.sni = vpn::Utf8ToWide(text("server_name"));
  vpn::AssignIfGiven(text("fingerprint"), node.fingerprint);
  node.publicKey = vpn::Utf8ToWide(text("public_key"));
  node.shortId = vpn::Utf8ToWide(text("short_id"));
  return node;
}

bool IsInner(std::string_view key) {
  return key == "server_name" || key == "fingerprint" || key == "public_key" || key == "short_id";
}

Nodes ByRapidJson(const std::string& body) {
  rapidjson::Document document;
  document.Parse(body.data(), body.size());
  Nodes nodes;
  for (const auto& row : document["data"].GetArray()) {
    const auto& inner = row["tls_settings"];
    const auto text = [&](const char* key) {
      const auto& value = IsInner(key) ? inner[key] : row[key];
      return std::string_view(value.GetString(), value.GetStringLength());
    };
    if (text("type") == "vless") {
      nodes.push_back(MakeNode(text, row["server_port"].GetInt()));
    }
  }
  return nodes;
}

Nodes BySimdJson(simdjson::dom::parser& parser, const std::string& body) {
  Nodes nodes;
  const simdjson::dom::element document = parser.parse(body);
  for (const simdjson::dom::element row : document["data"].get_array()) {
    const simdjson::dom::element inner = row["tls_settings"];
    const auto text = [&](const char* key) {
      const simdjson::dom::element value = IsInner(key) ? inner[key] : row[key];
      return std::string_view(value);
    };
    if (text("type") == "vless") {
      nodes.push_back(MakeNode(text, static_cast<std::int32_t>(std::int64_t(row["server_port"]))));
    }
  }
  return nodes;
}

Nodes ByNlohmannJson(const std::string& body) {
  Nodes nodes;
  const auto document = nlohmann::json::parse(body);
  for (const nlohmann::json& row : document.at("data")) {
    const nlohmann::json& inner = row.at("tls_settings");
    const auto text = [&](const char* key) -> std::string_view {
      const nlohmann::json& value = IsInner(key) ? inner.at(key) : row.at(key);
      return value.get_ref<const std::string&>();
    };
    if (text("type") == "vless") {
      nodes.push_back(MakeNode(text, row.at("server_port").get<std::int32_t>()));
    }
  }
  return nodes;
}

bool AreEqual(const vpn::NodeInfo& a, const vpn::NodeInfo& b) {
  return a.name == b.name && a.address == b.address && a.port == b.port && a.uuid == b.uuid &&
         a.flow == b.flow && a.sni == b.sni && a.fingerprint == b.fingerprint &&
         a.publicKey == b.publicKey && a.shortId == b.shortId;
}

template <class Read>
Case ReadingBy(const char* subject, const SharedReplies& replies, Read read) {
  const Nodes wanted = ByService(replies->First());
  const Nodes found = read(replies->First());
  if (wanted.empty() || wanted.size() != found.size() ||
      !std::equal(wanted.begin(), wanted.end(), found.begin(), AreEqual)) {
    Fail(std::string(subject) + " reads other nodes than the service");
  }
  return {subject, replies->First().size(),
          [replies, read, turn = std::size_t{0}]() mutable { Keep(read(replies->At(turn++))); }};
}

Case CopyingOf(const SharedReplies& replies) {
  return {"memcpy", replies->First().size(),
          [replies, copy = replies->First(), turn = std::size_t{0}]() mutable {
            const std::string& body = replies->At(turn++);
            std::memcpy(copy.data(), body.data(), body.size());
            Keep(copy);
          }};
}

}  // namespace

Cases PanelReply(bool quick) {
  Cases cases;
  const std::vector<std::size_t> sizes =
      quick
          ? std::vector<std::size_t>{1 << 10, 1 << 16}
          : std::vector<std::size_t>{1 << 10, 1 << 12, 1 << 14, 1 << 16, 1 << 18, 1 << 20, 1 << 22};
  const auto parser = std::make_shared<simdjson::dom::parser>();
  for (const std::size_t size : sizes) {
    const auto replies = std::make_shared<const Replies>(size);
    cases.push_back(ReadingBy("service", replies, ByService));
    cases.push_back(ReadingBy("rapidjson", replies, ByRapidJson));
    cases.push_back(ReadingBy("simdjson", replies, [parser](const std::string& text) {
      return BySimdJson(*parser, text);
    }));
    cases.push_back(ReadingBy("nlohmann", replies, ByNlohmannJson));
    cases.push_back(CopyingOf(replies));
  }
  return cases;
}

}  // namespace bench
