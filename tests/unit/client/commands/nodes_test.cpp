#include <winsock2.h>
#include <windows.h>

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class NodesTest : public unit::ClientTest {
 protected:
  void SetUp() override { PutAccount(); }
};

TEST_F(NodesTest, AreShownInATable) {
  EXPECT_EQ(Run({L"nodes"}), 0);
  EXPECT_EQ(Out(),
            "Node       Address        Port\n"
            "Tokyo 01   203.0.113.77    443\n");
}

TEST_F(NodesTest, WithTheTimeOfAConnect) {
  machine.connects.Next({sim::ConnectPlan::Kind::kConnectsAfter, 38});
  EXPECT_EQ(Run({L"nodes", L"--latency"}), 0);
  EXPECT_EQ(Out(),
            "Node       Address        Port   Latency\n"
            "Tokyo 01   203.0.113.77    443     38 ms\n");
}

TEST_F(NodesTest, OrWithWhatCameInstead) {
  EXPECT_EQ(Run({L"nodes", L"--latency"}), 0);
  EXPECT_EQ(Out(),
            "Node       Address        Port   Latency\n"
            "Tokyo 01   203.0.113.77    443         –   no answer in 2 s\n");
}

TEST_F(NodesTest, TheProgressIsVisible) {
  UseTerminal();
  std::vector<std::string> during;
  machine.clock.After(100, [&] { during = machine.console.terminal.Lines(); });
  EXPECT_EQ(Run({L"nodes", L"--latency"}), 0);
  ASSERT_EQ(during.size(), 1u);
  EXPECT_EQ(during[0].substr(3), " 0 of 1 node answered …");
}

TEST_F(NodesTest, CtrlCShowsWhatThereIs) {
  machine.clock.After(100, [&] { machine.console.Send(CTRL_C_EVENT); });
  EXPECT_EQ(Run({L"nodes", L"--latency"}), 130);
  EXPECT_NE(Out().find("–   interrupted\n"), std::string::npos);
}

TEST_F(NodesTest, AsJson) {
  machine.connects.Next({sim::ConnectPlan::Kind::kRefusedAtOnce, WSAECONNREFUSED});
  EXPECT_EQ(Run({L"nodes", L"--latency", L"--json"}), 0);
  EXPECT_EQ(Out(), R"({
  "schema": 1,
  "nodes": [
    {
      "name": "Tokyo 01",
      "address": "203.0.113.77",
      "port": 443,
      "latency": null,
      "remark": "refused"
    }
  ]
}
)");
}

TEST_F(NodesTest, WithoutAnAccountTheReasonIsShown) {
  machine.files.Remove(std::wstring(unit::kRuntime) + L"\\session.json");
  EXPECT_EQ(Run({L"nodes", L"--json"}), 1);
  EXPECT_EQ(Out(), "{\n  \"schema\": 1,\n  \"nodes\": [],\n  \"error\": \"not logged in\"\n}\n");
  EXPECT_EQ(Err(), "not logged in\n  What to do: sign in.\n");
}

TEST_F(NodesTest, APortThatCantBeIsSaidAndNotTried) {
  machine.files.Put(
      std::wstring(unit::kRuntime) + L"\\account.json",
      R"({"email":"someone@mail.example","expireAt":"2999-12-31","nodeName":"Tokyo 01",
      "address":"203.0.113.77","port":70000,"uuid":"u"})");
  EXPECT_EQ(Run({L"nodes", L"--latency"}), 0);
  EXPECT_EQ(Out(),
            "Node       Address         Port   Latency\n"
            "Tokyo 01   203.0.113.77   70000         –   there is no such port\n");
  EXPECT_EQ(machine.calls.Count("connect"), 0u);
}

TEST_F(NodesTest, AnIpv6AddressIsSaidAndNotTried) {
  machine.files.Put(std::wstring(unit::kRuntime) + L"\\account.json",
                    R"({"email":"someone@mail.example","expireAt":"2999-12-31","nodeName":"Six",
      "address":"2001:db8::1","port":443,"uuid":"u"})");
  EXPECT_EQ(Run({L"nodes", L"--latency"}), 0);
  EXPECT_EQ(Out(),
            "Node   Address       Port   Latency\n"
            "Six    2001:db8::1    443         –   an IPv6 address; only IPv4 is measured\n");
  EXPECT_EQ(machine.calls.Count("GetAddrInfoW"), 0u);
}

TEST_F(NodesTest, ANameThatDoesNotResolveInTimeIsSaid) {
  machine.names.Set("slow.node.example", sim::HostEntry{.ipv4 = {"198.51.100.7"}, .takes = 30'000});
  machine.files.Put(std::wstring(unit::kRuntime) + L"\\account.json",
                    R"({"email":"someone@mail.example","expireAt":"2999-12-31","nodeName":"大阪 7",
      "address":"slow.node.example","port":443,"uuid":"u"})");
  EXPECT_EQ(Run({L"nodes", L"--latency"}), 0);
  EXPECT_NE(Out().find("443         –   the name did not resolve in 2 s\n"), std::string::npos)
      << Out();
}

TEST_F(NodesTest, ANameThatDoesNotResolve) {
  machine.files.Put(std::wstring(unit::kRuntime) + L"\\account.json",
                    R"({"email":"someone@mail.example","expireAt":"2999-12-31","nodeName":"大阪 7",
      "address":"gone.node.example","port":443,"uuid":"u"})");
  EXPECT_EQ(Run({L"nodes", L"--latency"}), 0);
  EXPECT_EQ(Out(),
            "Node     Address             Port   Latency\n"
            "大阪 7   gone.node.example    443         –   the name does not resolve\n");
}

}  // namespace
}  // namespace vpn
