// Nodes from the panel's server list.
#include <string>
#include <vector>

#include "src/panel/account_reply.h"
#include "tests/sim/fixture.h"

namespace vpn {
namespace {

class ServerList : public sim::MachineTest {
 protected:
  static std::vector<NodeInfo> Nodes(const std::vector<std::string>& servers) {
    return NodesFromServers(servers, L"the-uuid");
  }
  static size_t Count(const std::string& server) { return Nodes({server}).size(); }
  static int Port(const std::string& fields) {
    return NodeFromServer("{" + fields + "}", L"").port;
  }
};

TEST_F(ServerList, AServerFillsEveryField) {
  const NodeInfo node = NodeFromServer(
      R"({"name":"\u9999\u6e2f","host":"hk.example","server_port":8443,"flow":"flow-x",)"
      R"("server_name":"sni.example","fingerprint":"safari","public_key":"KEY","short_id":"01"})",
      L"the-uuid");
  EXPECT_EQ(node.name, L"香港");
  EXPECT_EQ(node.address, L"hk.example");
  EXPECT_EQ(node.port, 8443);
  EXPECT_EQ(node.uuid, L"the-uuid");
  EXPECT_EQ(node.flow, L"flow-x");
  EXPECT_EQ(node.sni, L"sni.example");
  EXPECT_EQ(node.fingerprint, L"safari");
  EXPECT_EQ(node.publicKey, L"KEY");
  EXPECT_EQ(node.shortId, L"01");
}

TEST_F(ServerList, AnEmptyServerKeepsTheDefaults) {
  const NodeInfo node = NodeFromServer("{}", L"the-uuid");
  EXPECT_EQ(node.name + node.address + node.sni + node.publicKey + node.shortId, L"");
  EXPECT_EQ(node.port, 0);
  EXPECT_EQ(node.uuid, L"the-uuid");
  EXPECT_EQ(node.flow, L"xtls-rprx-vision");
  EXPECT_EQ(node.fingerprint, L"chrome");
}

TEST_F(ServerList, EmptyFlowAndFingerprintKeepTheDefaults) {
  const NodeInfo node = NodeFromServer(R"({"flow":"","fingerprint":null})", L"");
  EXPECT_EQ(node.flow, L"xtls-rprx-vision");
  EXPECT_EQ(node.fingerprint, L"chrome");
}

TEST_F(ServerList, EachSecondKeyServesWhereTheFirstIsEmpty) {
  const NodeInfo node = NodeFromServer(
      R"({"name":"","host":"hk.example","server_name":null,"sni":"S","public_key":"","publicKey":"K",)"
      R"("short_id":"","shortId":"I"})",
      L"");
  EXPECT_EQ(node.name, L"hk.example");
  EXPECT_EQ(node.sni, L"S");
  EXPECT_EQ(node.publicKey, L"K");
  EXPECT_EQ(node.shortId, L"I");
}

TEST_F(ServerList, EachFirstKeyWinsWhereBothHaveAValue) {
  const NodeInfo node = NodeFromServer(
      R"({"sni":"no","server_name":"S","publicKey":"no","public_key":"K","shortId":"no","short_id":"I"})",
      L"");
  EXPECT_EQ(node.sni, L"S");
  EXPECT_EQ(node.publicKey, L"K");
  EXPECT_EQ(node.shortId, L"I");
}

TEST_F(ServerList, TheServerPortComesBeforeThePort) {
  EXPECT_EQ(Port(R"("server_port":10443,"port":443)"), 10443);
  EXPECT_EQ(Port(R"("port":"443","server_port":10443)"), 10443);
  EXPECT_EQ(Port(R"("server_port":"10443","port":443)"), 10443);
}

TEST_F(ServerList, ThePortServesWhereTheServerPortIsAbsentOr0) {
  EXPECT_EQ(Port(R"("port":443)"), 443);
  EXPECT_EQ(Port(R"("port":"443")"), 443);
  EXPECT_EQ(Port(R"("port":"\u003443")"), 443);
  EXPECT_EQ(Port(R"("server_port":0,"port":"443-500")"), 443);
  EXPECT_EQ(Port(R"("server_port":null,"port":443)"), 443);
  EXPECT_EQ(Port(R"("server_port":"x","port":443)"), 443);
  EXPECT_EQ(Port(R"("port":"x")"), 0);
  EXPECT_EQ(Port(R"("port":null)"), 0);
}

TEST_F(ServerList, APortBeyond32BitsIsConvertedPlainly) {
  EXPECT_EQ(Port(R"("server_port":4294967739)"), 443);
  EXPECT_EQ(Port(R"("server_port":4294967296,"port":443)"), 443);
  EXPECT_EQ(Port(R"("server_port":-5)"), -5);
  EXPECT_EQ(Port(R"("server_port":-1,"port":"443")"), -1);
}

constexpr char kGood[] = R"("name":"n","host":"h","port":443,"public_key":"k"})";

TEST_F(ServerList, OnlyVlessServersAndThoseWithoutATypeCount) {
  for (const char* type : {"vless", "VLESS", "Vless", "v2ray", "V2RAY", ""}) {
    EXPECT_EQ(Count(R"({"type":")" + std::string(type) + "\"," + kGood), 1u) << type;
  }
  for (const char* type : {"trojan", "vmess", "vless ", "none", "shadowsocks", "v2rayn"}) {
    EXPECT_EQ(Count(R"({"type":")" + std::string(type) + "\"," + kGood), 0u) << type;
  }
  EXPECT_EQ(Count(std::string("{") + kGood), 1u);
  EXPECT_EQ(Count(std::string(R"({"type":null,)") + kGood), 1u);
}

TEST_F(ServerList, AServerNeedsAddressPortAndPublicKey) {
  EXPECT_EQ(Count(R"({"host":"h","port":443,"public_key":"k"})"), 1u);
  EXPECT_EQ(Count(R"({"host":"h","port":1,"public_key":"k"})"), 1u);
  EXPECT_EQ(Count(R"({"name":"n","port":443,"public_key":"k"})"), 0u);
  EXPECT_EQ(Count(R"({"host":"h","public_key":"k"})"), 0u);
  EXPECT_EQ(Count(R"({"host":"h","port":0,"public_key":"k"})"), 0u);
  EXPECT_EQ(Count(R"({"host":"h","port":-1,"public_key":"k"})"), 0u);
  EXPECT_EQ(Count(R"({"host":"h","port":443})"), 0u);
  EXPECT_EQ(Count(R"({"host":"h","port":443,"public_key":""})"), 0u);
}

TEST_F(ServerList, WithoutAUuidNoServerCounts) {
  EXPECT_TRUE(NodesFromServers({std::string("{") + kGood}, L"").empty());
}

TEST_F(ServerList, TheOrderStays) {
  const std::vector<NodeInfo> nodes =
      Nodes({R"({"host":"b","port":1,"public_key":"k"})",
             R"({"type":"trojan","host":"x","port":1,"public_key":"k"})",
             R"({"host":"a","port":1,"public_key":"k"})"});
  ASSERT_EQ(nodes.size(), 2u);
  EXPECT_EQ(nodes[0].address, L"b");
  EXPECT_EQ(nodes[1].address, L"a");
}

// Rows of panels that give them whole: keys are looked for at every depth.
TEST_F(ServerList, ATypeInsideTheNetworkSettingsHidesTheServersOwn) {
  EXPECT_EQ(Count(R"({"network_settings":{"header":{"type":"none"}},"type":"vless",)" +
                  std::string(kGood)),
            0u);
}

TEST_F(ServerList, KeysInsideTheTlsSettingsAreFound) {
  const NodeInfo node = NodeFromServer(
      R"({"host":"h","port":443,"server_port":10443,"tls_settings":{"server_name":"S",)"
      R"("server_port":"8443","public_key":"K","short_id":"I","fingerprint":"ios"}})",
      L"");
  EXPECT_EQ(node.port, 10443);
  EXPECT_EQ(node.sni, L"S");
  EXPECT_EQ(node.publicKey, L"K");
  EXPECT_EQ(node.shortId, L"I");
  EXPECT_EQ(node.fingerprint, L"ios");
}

}  // namespace
}  // namespace vpn
