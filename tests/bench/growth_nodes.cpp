// Every case asks a panel address of its own, so that the cases can take turns on one machine.
#include <string>
#include <vector>

#include "src/common/text.h"
#include "src/control/account_cache.h"
#include "src/control/connect_operation.h"
#include "src/runtime/process_state.h"
#include "src/tunnel/tunnel_config.h"
#include "tests/bench/figures.h"
#include "tests/bench/links.h"
#include "tests/bench/platform_lists.h"
#include "tests/sim/machine.h"

namespace bench {
namespace {

constexpr wchar_t kProxySettings[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr wchar_t kRefusal[] =
    L"系统代理正在开启（proxy）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。";

// A runtime directory with a panel whose account has `count` nodes. Gives the directory.
std::wstring PutPanel(sim::Machine& machine, std::size_t count) {
  const std::wstring directory = L"C:\\nodes" + std::to_wstring(count);
  const std::string panel = "https://panel" + std::to_string(count) + ".example";
  machine.files.Put(directory + L"\\panel.json", R"({"apiBase":")" + panel + R"("})");
  machine.files.Put(directory + L"\\session.json", R"({"email":"e","auth_data":"Bearer x"})");
  machine.http.On("GET", panel + "/api/v1/user/getSubscribe",
                  {.body = R"({"data":{"plan_id":1,"uuid":"u","token":"t","expired_at":null}})"});
  const std::string links = Encode(Links(count));
  machine.http.On("GET", panel + "/api/v1/client/subscribe?token=t",
                  {.body = links, .chunk = links.size()});
  return directory;
}

void ConnectUntilRefused(const std::wstring& directory, std::size_t nodes) {
  sim::Machine& machine = *sim::Machine::Current();
  vpn::SetRuntimeDir(directory);
  vpn::InvalidateAccountCache();
  const std::wstring text = vpn::ConnectOperation(LastName(nodes)).text();
  const std::string config =
      machine.files.Read(directory + L"\\session.json.xray.json").value_or("");
  if (text != kRefusal ||
      config.find("n" + std::to_string(nodes - 1) + ".node.example") == std::string::npos) {
    Fail("the connect did not take the last node: " + vpn::WideToUtf8(text));
  }
  machine.http.Forget();
  machine.calls.Clear();
}

}  // namespace

Cases GrowthOfNodes(bool quick) {
  sim::Machine& machine = *sim::Machine::Current();
  machine.registry.SetDword(kProxySettings, L"ProxyEnable", 1);
  machine.registry.SetText(kProxySettings, L"ProxyServer", L"proxy");
  machine.environment.Set(L"TAVRIN_TIMING", std::wstring(300, L'x'));  // too long: no trace
  Cases cases;
  for (const std::size_t size : Sizes(10'000, quick)) {
    cases.push_back(
        {"service", size, [directory = PutPanel(machine, size), routes = Routes(1), size] {
           g_lists = {};
           g_lists.routes = routes.get();
           ConnectUntilRefused(directory, size);
         }});
  }
  return cases;
}

}  // namespace bench
