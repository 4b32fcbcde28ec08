#include "tests/e2e/panel/service/panel_service_test.h"

#include <winsock2.h>

#include "tests/e2e/harness/waiting.h"

namespace e2e {
namespace {

constexpr char kAccountPath[] = "/api/v1/user/getSubscribe";
constexpr std::uint16_t kTunnelPort = 17593;

bool IsListening(std::uint16_t port) {
  WSADATA data;
  WSAStartup(MAKEWORD(2, 2), &data);
  const SOCKET probe = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool listening =
      connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  closesocket(probe);
  WSACleanup();
  return listening;
}

}  // namespace

const Lines kFetchSequence = {
    "GET /api/v1/user/getSubscribe",
    "GET /api/v1/client/subscribe?token=0f1e2d3c4b5a69788796a5b4c3d2e1f0"};

// The port is the whole machine's: the helper of an earlier test may still be letting go of it.
PanelServiceTest::PanelServiceTest() {
  WaitUntil("the tunnel's port is free", [] { return !IsListening(kTunnelPort); });
  RemoveFile(box.runtime() + L"\\account.json");
  WriteText(box.runtime() + L"\\session.json",
            std::string(R"({"email":")") + kEmail + R"(","auth_data":")" + kCredential + "\"}\n");
  Configure({{"apiBase", panel.http()}});
}

void PanelServiceTest::Configure(const Json& keys) const {
  WriteText(box.runtime() + L"\\panel.json", keys.dump(2));
}

void PanelServiceTest::SignOut() const {
  RemoveFile(box.runtime() + L"\\session.json");
}

void PanelServiceTest::StartCold(const Environment& environment) {
  panel.Behave({{"path", kAccountPath}, {"do", "answer"}, {"status", 500}, {"times", 1}});
  StartService(environment);
  WaitUntil("the service warms up", [this] { return panel.Requests().size() == 1; });
  panel.ForgetRequests();
}

void PanelServiceTest::ExpectRefused(const std::string& text) {
  EXPECT_EQ(Ask(R"({"op":"connect"})"), Refusal(text));
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
  for (const char* child : {"xray.exe", "tun2socks-windows-amd64.exe", "netsh.exe"}) {
    EXPECT_EQ(machine.Starts(child), 0U) << child;
  }
  EXPECT_FALSE(Exists(box.runtime() + L"\\session.json.xray.json"));
  EXPECT_EQ(ServiceLog().back(), "ipc error=" + text);
}

}  // namespace e2e
