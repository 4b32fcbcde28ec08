// Which node a connect takes, and what the user reads when there is none.
#include <gtest/gtest.h>

#include "src/control/account_cache.h"
#include "src/control/connect_operation.h"
#include "src/control/dispatch.h"
#include "tests/sim/pipe_client.h"
#include "tests/unit/background_server.h"
#include "tests/unit/control/control_fixture.h"
#include "tests/unit/control/scripted/scripted_control_plane.h"

namespace vpn {
namespace {

using unit::Node;

class NodeChoice : public unit::ControlTest {
 protected:
  NodeChoice() { script = unit::ControlPlaneScript(); }
  void TearDown() override {
    EXPECT_EQ(script.answers.size(), 0u) << "fetches that were not made";
    EXPECT_EQ(script.alive, 0);
    ControlTest::TearDown();
  }

  void Answer(std::vector<NodeInfo> nodes) { script.answers.push_back({true, nodes, L"", {}}); }
  void Refuse(const std::wstring& error) { script.answers.push_back({false, {}, error, {}}); }

  // The address of the node that was taken, from the configuration and from the pinned route.
  void ExpectConnectedTo(const std::string& address) {
    EXPECT_NE(GeneratedConfig().find('"' + address + '"'), std::string::npos) << address;
    EXPECT_TRUE(HasRoute(address, 32)) << address;
  }

  unit::ControlPlaneScript& script = unit::TheScript();
  const std::vector<NodeInfo> three = {Node(L"Tokyo", L"198.51.100.1"),
                                       Node(L"Osaka", L"198.51.100.2"),
                                       Node(L"Kyoto", L"198.51.100.3")};
};

TEST_F(NodeChoice, EmptyKeyTakesTheFirst) {
  Answer(three);
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  ExpectConnectedTo("198.51.100.1");
}

TEST_F(NodeChoice, NameTakesItsNode) {
  for (const auto& [name, address] : {std::pair(L"Tokyo", "198.51.100.1"),
                                      {L"Osaka", "198.51.100.2"},
                                      {L"Kyoto", "198.51.100.3"}}) {
    InvalidateAccountCache();
    Answer(three);
    EXPECT_EQ(ConnectOperation(name).text(), L"");
    ExpectConnectedTo(address);
  }
}

TEST_F(NodeChoice, LastOfSeveralEqualNamesWins) {
  Answer({Node(L"A", L"198.51.100.1"), Node(L"B", L"198.51.100.2"), Node(L"B", L"198.51.100.3"),
          Node(L"A", L"198.51.100.4"), Node(L"C", L"198.51.100.5")});
  EXPECT_EQ(ConnectOperation(L"A").text(), L"");
  ExpectConnectedTo("198.51.100.4");
  EXPECT_EQ(ConnectOperation(L"B").text(), L"");
  ExpectConnectedTo("198.51.100.3");
}

TEST_F(NodeChoice, EmptyKeyNeverMatchesANodeWithoutAName) {
  Answer({Node(L"A", L"198.51.100.1"), Node(L"", L"198.51.100.2")});
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  ExpectConnectedTo("198.51.100.1");
}

TEST_F(NodeChoice, NameMustBeEqualInLengthAndCase) {
  for (const wchar_t* name : {L"osaka", L"OSAKA", L"Osak", L"Osaka ", L" Osaka", L"Osaka2"}) {
    InvalidateAccountCache();
    Answer(three);
    Answer(three);  // it did not match, so the list is fetched once more
    EXPECT_EQ(ConnectOperation(name).text(), L"");
    ExpectConnectedTo("198.51.100.1");
  }
}

TEST_F(NodeChoice, NamesAreComparedByTheirUnits) {
  Answer({Node(L"A", L"198.51.100.1"), Node(L"\u00E9", L"198.51.100.2")});
  EXPECT_EQ(ConnectOperation(L"\u00E9").text(), L"");
  ExpectConnectedTo("198.51.100.2");
  Answer(three);
  EXPECT_EQ(ConnectOperation(L"e\u0301").text(), L"");  // looks the same, and is not
  ExpectConnectedTo("198.51.100.1");
}

TEST_F(NodeChoice, NewNodeIsFoundByTheSecondFetchWithin90Seconds) {
  Answer({Node(L"Tokyo", L"198.51.100.1")});
  EXPECT_EQ(ConnectOperation(L"Tokyo").text(), L"");
  Answer(three);
  EXPECT_EQ(ConnectOperation(L"Kyoto").text(), L"");
  ExpectConnectedTo("198.51.100.3");
}

TEST_F(NodeChoice, LastMatchWinsInTheNewListToo) {
  Answer({Node(L"Tokyo", L"198.51.100.1")});
  Answer({Node(L"X", L"198.51.100.2"), Node(L"Y", L"198.51.100.3"), Node(L"X", L"198.51.100.4"),
          Node(L"Z", L"198.51.100.5")});
  EXPECT_EQ(ConnectOperation(L"X").text(), L"");
  ExpectConnectedTo("198.51.100.4");
}

TEST_F(NodeChoice, NameThatIsNowhereQuietlyTakesTheFirstOfTheNewList) {
  Answer({Node(L"Tokyo", L"198.51.100.1")});
  Answer({Node(L"Osaka", L"198.51.100.2"), Node(L"Tokyo", L"198.51.100.1")});
  EXPECT_EQ(ConnectOperation(L"Atlantis").text(), L"");
  ExpectConnectedTo("198.51.100.2");
}

TEST_F(NodeChoice, SecondFetchIsCachedForTheNextConnect) {
  Answer({Node(L"Tokyo", L"198.51.100.1")});
  Answer(three);
  EXPECT_EQ(ConnectOperation(L"Atlantis").text(), L"");
  EXPECT_EQ(ConnectOperation(L"Kyoto").text(), L"");
  ExpectConnectedTo("198.51.100.3");
}

TEST_F(NodeChoice, RefusedFetchWithoutATextAsksToSignIn) {
  Refuse(L"");
  EXPECT_EQ(ConnectOperation(L"").text(), L"请先在Tavrin登录");
  Refuse(L"");
  EXPECT_EQ(ConnectOperation(L"Tokyo").text(), L"请先在Tavrin登录");
}

TEST_F(NodeChoice, RefusedFetchHandsItsTextOn) {
  Refuse(L"套餐已过期");
  EXPECT_EQ(ConnectOperation(L"").text(), L"套餐已过期");
}

TEST_F(NodeChoice, RefusedSecondFetchHandsItsTextOnOrAsksToSignIn) {
  for (const auto& [text, shown] :
       {std::pair(L"套餐已过期", L"套餐已过期"), {L"", L"请先在Tavrin登录"}}) {
    InvalidateAccountCache();
    Answer(three);
    Refuse(text);
    EXPECT_EQ(ConnectOperation(L"Atlantis").text(), shown);
  }
  EXPECT_EQ(GeneratedConfig(), "");
}

TEST_F(NodeChoice, AccountWithoutNodesIsNamedAndAskedForAgainNextTime) {
  Answer({});
  EXPECT_EQ(ConnectOperation(L"").text(), L"没有可用节点");
  Answer(three);
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
}

TEST_F(NodeChoice, AccountWithoutNodesIsNotFetchedTwiceForAName) {
  Answer({});
  EXPECT_EQ(ConnectOperation(L"Tokyo").text(), L"没有可用节点");
}

TEST_F(NodeChoice, SecondFetchWithoutNodesIsNamed) {
  Answer(three);
  Answer({});
  EXPECT_EQ(ConnectOperation(L"Atlantis").text(), L"没有可用节点");
  EXPECT_EQ(GeneratedConfig(), "");
}

TEST_F(NodeChoice, TextOfTheFirstFetchDoesNotReachTheUserWhenItSucceeded) {
  script.answers.push_back({true, {}, L"a warning", {}});
  EXPECT_EQ(ConnectOperation(L"").text(), L"没有可用节点");
}

TEST_F(NodeChoice, RunningTunnelSurvivesEveryRefusalInFrontOfTheStart) {
  Answer(three);
  EXPECT_EQ(ConnectOperation(L"Osaka").text(), L"");
  Refuse(L"offline");
  EXPECT_EQ(ConnectOperation(L"Atlantis").text(), L"offline");
  Answer({});
  EXPECT_EQ(ConnectOperation(L"").text(), L"没有可用节点");
  EXPECT_EQ(Alive(), unit::BothChildren());
  ExpectConnectedTo("198.51.100.2");
}

TEST_F(NodeChoice, NodeWithoutAnAddressPinsTheDefault) {
  Answer({Node(L"A", L"")});
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  EXPECT_TRUE(HasRoute("203.0.113.10", 32));
}

TEST_F(NodeChoice, NodeWithAHostNamePinsTheDefault) {
  machine.names.Set("node.example", {"198.51.100.44"});
  Answer({Node(L"A", L"node.example")});
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  EXPECT_TRUE(HasRoute("203.0.113.10", 32));
  EXPECT_FALSE(HasRoute("198.51.100.44", 32));
}

TEST_F(NodeChoice, BackendIsChosenForTheRuntimeDirectory) {
  Answer(three);
  EXPECT_EQ(ConnectOperation(L"").text(), L"");
  EXPECT_EQ(script.runtimeDirs, std::vector<std::wstring>{L"C:\\run"});
}

class LongError : public NodeChoice {};

TEST_F(LongError, ReplyThatIsLargerThanThePipesBufferArrivesWhole) {
  Refuse(std::wstring(10000, L'x'));
  unit::BackgroundServer server(machine, [] {
    const HANDLE pipe = CreateNamedPipeW(L"\\\\.\\pipe\\TavrinService", PIPE_ACCESS_DUPLEX, 0, 8,
                                         4096, 4096, 0, nullptr);
    (void)ConnectNamedPipe(pipe, nullptr);
    HandleClient(pipe);
    (void)CloseHandle(pipe);
    return 0;
  });
  EXPECT_EQ(sim::PipeClient::Exchange(machine, R"({"op":"connect"})"),
            "{\"ok\":false,\"running\":false,\"error\":\"" + std::string(10000, 'x') + "\"}");
  EXPECT_TRUE(server.Ends());
}

// 39 bytes stand around an error text when both words are "false".
TEST_F(LongError, ReplyOf65536BytesIsSentAndOneByteMoreIsNot) {
  const HANDLE pipe = CreateNamedPipeW(L"\\\\.\\pipe\\TavrinService", PIPE_ACCESS_DUPLEX, 0, 8,
                                       1 << 20, 1 << 20, 0, nullptr);
  sim::PipeClient client(machine);
  ASSERT_TRUE(client.Connect());
  std::string received;
  machine.faults.BeforeEach("FlushFileBuffers",
                            [&] { received = client.ReceiveFrame().value_or("none"); });
  Refuse(std::wstring(65497, L'x'));
  ASSERT_TRUE(client.SendFrame(R"({"op":"connect"})"));
  HandleClient(pipe);
  EXPECT_EQ(received.size(), 65536u);
  received.clear();
  Refuse(std::wstring(65498, L'x'));
  ASSERT_TRUE(client.SendFrame(R"({"op":"connect"})"));
  machine.calls.Clear();
  SetLastError(4711);
  HandleClient(pipe);
  EXPECT_EQ(received, "");
  EXPECT_EQ(PipeWrites(), 0);
  EXPECT_NE(Log().find("\nipc write reply failed err="), std::string::npos);
  (void)CloseHandle(pipe);
}

}  // namespace
}  // namespace vpn
