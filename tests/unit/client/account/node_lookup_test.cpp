#include "client/account/node_lookup.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class NodeLookupTest : public unit::ClientTest {};

std::vector<NodeInfo> Nodes() {
  std::vector<NodeInfo> nodes(4);
  nodes[0].name = L"Tokyo 01";
  nodes[0].address = L"203.0.113.77";
  nodes[1].name = L"香港 BGP 02";
  nodes[2].name = L"Tokyo 01";
  nodes[2].address = L"203.0.113.78";
  nodes[3].name = L"大阪 7";
  return nodes;
}

TEST_F(NodeLookupTest, OfEqualNamesTheLastCountsAsInTheService) {
  const std::vector<NodeInfo> nodes = Nodes();
  ASSERT_NE(NodeByName(nodes, L"Tokyo 01"), nullptr);
  EXPECT_EQ(NodeByName(nodes, L"Tokyo 01")->address, L"203.0.113.78");
  EXPECT_EQ(NodeByName(nodes, L"tokyo 01"), nullptr);
}

TEST_F(NodeLookupTest, AMistypedNameHasANearestOne) {
  EXPECT_EQ(NearestName(Nodes(), L"Tokio 01"), L"Tokyo 01");
  EXPECT_EQ(NearestName(Nodes(), L"tokyo 01"), L"Tokyo 01");
  EXPECT_EQ(NearestName(Nodes(), L"Tokio"), L"Tokyo 01");
  EXPECT_EQ(NearestName(Nodes(), L"大阪"), L"大阪 7");
  EXPECT_EQ(NearestName(Nodes(), L"Frankfurt"), L"");
  EXPECT_EQ(NearestName({}, L"Tokyo"), L"");
}

TEST_F(NodeLookupTest, EndpointsOfIpv6HaveBrackets) {
  EXPECT_EQ(Endpoint(L"203.0.113.77", 443), L"203.0.113.77:443");
  EXPECT_EQ(Endpoint(L"2001:db8::1", 443), L"[2001:db8::1]:443");
}

TEST_F(NodeLookupTest, TheAccountComesFromTheServicesBackend) {
  PutAccount();
  const FetchedAccount account = FetchAccount(unit::kRuntime);
  EXPECT_TRUE(account.isFetched);
  ASSERT_EQ(account.session.nodes.size(), 1u);
  EXPECT_EQ(account.session.nodes[0].name, L"Tokyo 01");
}

TEST_F(NodeLookupTest, AnAccountThatIsNotThereSaysWhy) {
  const FetchedAccount account = FetchAccount(unit::kRuntime);
  EXPECT_FALSE(account.isFetched);
  EXPECT_EQ(account.error, L"not logged in");
}

TEST_F(NodeLookupTest, TheRunningNodeIsThatOfTheGeneratedConfiguration) {
  machine.files.Put(std::wstring(unit::kRuntime) + L"\\session.json.xray.json",
                    R"({"inbounds":[{"port":17593,"listen":"127.0.0.1"}],"outbounds":[{
        "settings":{"vnext":[{"address":"203.0.113.77","port":8443,"users":[]}]}}]})");
  const RunningNode node = ReadRunningNode(unit::kRuntime);
  EXPECT_EQ(node.address, L"203.0.113.77");
  EXPECT_EQ(node.port, 8443);
}

TEST_F(NodeLookupTest, ADamagedOrMissingConfigurationHasNoNode) {
  EXPECT_EQ(ReadRunningNode(unit::kRuntime).address, L"");
  for (const char* text : {"", "{", "vnext", R"({"vnext":[)", R"({"vnext":[]})"}) {
    machine.files.Put(std::wstring(unit::kRuntime) + L"\\session.json.xray.json", text);
    EXPECT_EQ(ReadRunningNode(unit::kRuntime).address, L"") << text;
  }
}

}  // namespace
}  // namespace vpn
