#include "tests/panel/endpoints.h"

namespace panel {
namespace {

// Today's panels tell no address here.
Json ShortRow(const Json& node) {
  return {{"id", node.at("id")},
          {"type", "vless"},
          {"version", nullptr},
          {"name", node.at("name")},
          {"rate", "1.00"},
          {"tags", nullptr},
          {"is_online", 1},
          {"cache_key", "vless-" + std::to_string(node.at("id").get<int>()) + "-1"},
          {"last_check_at", 1760000000}};
}

// The rows of older ones, and of the second family.
Json WholeRow(const Json& node) {
  return {{"id", node.at("id")},
          {"group_id", Json::array({"1"})},
          {"route_id", nullptr},
          {"name", node.at("name")},
          {"parent_id", nullptr},
          {"host", node.at("host")},
          {"port", std::to_string(node.at("port").get<int>())},
          {"server_port", node.at("port")},
          {"tls", 2},
          {"tls_settings",
           {{"server_name", node.at("server_name")},
            {"public_key", node.at("public_key")},
            {"short_id", node.at("short_id")},
            {"fingerprint", node.at("fingerprint")}}},
          {"flow", node.at("flow")},
          {"network", "tcp"},
          {"rate", "1"},
          {"type", node.at("type")},
          {"last_check_at", 1760000000},
          {"is_online", 1}};
}

}  // namespace

Reply ServerFetch(Call& call) {
  Json rows = Json::array();
  const bool whole = call.state["wholeServerRows"] == true;
  if (IsAvailable(*call.user)) {
    for (const Json& node : call.state["nodes"]) {
      rows.push_back(whole ? WholeRow(node) : ShortRow(node));
    }
  }
  return Plain(200, {{"data", rows}});
}

}  // namespace panel
