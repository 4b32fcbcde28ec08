#include "tests/fault/reply_texts.h"

#include <algorithm>

namespace fault {

const wchar_t kPortTakenText[] =
    L"本机端口 17593 已被其他程序占用，无法建立隧道。请退出其他代理客户端后重试。";

namespace {

constexpr wchar_t kNoTable[] = L"GetIpForwardTable2 failed";
constexpr wchar_t kNoRoute[] = L"no physical default gateway";
constexpr wchar_t kNoCore[] = L"连接核心无法启动，请换一条线路或重新登录后再试。";
constexpr wchar_t kNoAdapter[] = L"wintun adapter not created";
constexpr wchar_t kNoSplit[] = L"split default routes were not installed on TUN";
constexpr wchar_t kNoNodes[] = L"没有可用节点";
constexpr wchar_t kNoPanel[] = L"无法连接面板。";

// A call whose failure the connect does not survive. Where a call is repeated until it works, or
// where another way is tried, only a failure that lasts counts: `once` is null then.
struct Rule {
  const char* step;
  const char* call;  // the beginning of `name text`
  int ordinal;       // 0: each
  const wchar_t* once;
  const wchar_t* onwards;
};

const std::vector<Rule>& LocalRules() {
  static const auto& rules = *new std::vector<Rule>{
      {"account", R"(_wfsopen "C:\run\session.json")", 0, L"not logged in", L"not logged in"},
      {"account", R"(_wfsopen "C:\run\account.json")", 0, L"cannot read C:\\run\\account.json",
       L"cannot read C:\\run\\account.json"},
      {"routes installed", "CreateIpForwardEntry2", 1,
       L"CreateIpForwardEntry2 failed 5 for 198.51.100.7",
       L"CreateIpForwardEntry2 failed 5 for 198.51.100.7"},
  };
  return rules;
}

const std::vector<Rule>& PanelRules() {
  static const auto& rules = *new std::vector<Rule>{
      // Without the file there is no panel, and the local backend answers.
      {"account", R"(_wfsopen "C:\run\panel.json")", 1, L"cannot read C:\\run\\account.json",
       L"not logged in"},
      {"account", R"(_wfsopen "C:\run\session.json")", 0, L"请先登录", L"请先登录"},
      {"account", "WinHttpConnect", 1, kNoPanel, kNoPanel},
      {"account", "WinHttpOpenRequest", 1, L"无法创建面板请求", L"无法创建面板请求"},
      {"account", "WinHttpSendRequest", 1, L"无法连上面板服务器。", L"无法连上面板服务器。"},
      {"account", "WinHttpReceiveResponse", 1, L"与面板的连接被中断。", L"与面板的连接被中断。"},
      {"account", "WinHttpQueryDataAvailable", 1, kNoNodes, kNoNodes},
      {"account", "WinHttpReadData", 1, kNoNodes, kNoNodes},
      // A subscription that fails is made good by the server list, unless that fails too.
      {"account", "WinHttpConnect", 2, nullptr, kNoPanel},
      {"account", "WinHttpOpenRequest", 2, nullptr, L"无法创建面板请求"},
      {"account", "WinHttpSendRequest", 2, nullptr, L"无法连上面板服务器。"},
      {"account", "WinHttpReceiveResponse", 2, nullptr, L"与面板的连接被中断。"},
      {"account", "WinHttpQueryDataAvailable", 3, nullptr, kNoPanel},
      {"account", "WinHttpReadData", 2, nullptr, kNoPanel},
      {"routes installed", "CreateIpForwardEntry2", 1,
       L"CreateIpForwardEntry2 failed 5 for 203.0.113.10",
       L"CreateIpForwardEntry2 failed 5 for 203.0.113.10"},
  };
  return rules;
}

const std::vector<Rule>& CommonRules() {
  static const auto& rules = *new std::vector<Rule>{
      {"account", "GetIpForwardTable2", 0, kNoTable, kNoTable},
      {"account", "ConvertInterfaceLuidToAlias \"以太网\"", 0, kNoRoute, kNoRoute},
      {"account", R"(_wfsopen "C:\run\session.json.xray.json")", 0,
       L"cannot write generated xray config", L"cannot write generated xray config"},

      {"find physical route", "FindFirstFileW", 0, L"tun2socks exe not found",
       L"xray.exe not found"},
      {"find physical route", R"(GetFileAttributesW "C:\run\xray\xray.exe")", 0,
       L"xray.exe not found", L"xray.exe not found"},
      {"find physical route", R"(GetFileAttributesW "C:\run\tun2socks\wintun.dll")", 0,
       L"wintun.dll not found next to tun2socks", L"wintun.dll not found next to tun2socks"},
      {"find physical route", R"(GetFileAttributesW "C:\run\session.json.xray.json")", 0,
       L"config not found", L"config not found"},
      {"find physical route", "GetIpForwardTable2", 0, kNoTable, kNoTable},
      {"find physical route", "ConvertInterfaceLuidToAlias \"以太网\"", 0, kNoRoute, kNoRoute},

      {"spawn xray", "CreateJobObjectW", 0, L"CreateJobObject failed", L"CreateJobObject failed"},
      {"spawn xray", "SetInformationJobObject", 0, L"SetInformationJobObject failed",
       L"SetInformationJobObject failed"},
      {"spawn xray", "CreateProcessW", 0, L"CreateProcess failed err=5",
       L"CreateProcess failed err=5"},
      {"spawn xray", "AssignProcessToJobObject", 0, L"AssignProcessToJobObject failed",
       L"AssignProcessToJobObject failed"},
      {"spawn xray", "ResumeThread", 0, kNoCore, kNoCore},
      {"xray socks listening", "WSAStartup", 0, kNoCore, kNoCore},
      {"xray socks listening", "WaitForSingleObject", 0, kNoCore, kNoCore},

      {"spawn tun2socks", "CreateProcessW", 0, L"CreateProcess failed err=5",
       L"CreateProcess failed err=5"},
      {"spawn tun2socks", "AssignProcessToJobObject", 0, L"AssignProcessToJobObject failed",
       L"AssignProcessToJobObject failed"},
      {"spawn tun2socks", "ResumeThread", 0, kNoAdapter, kNoAdapter},
      {"wintun adapter up", "GetAdaptersAddresses", 0, nullptr, kNoAdapter},
      {"set tun address (api)", "WaitForSingleObject", 0, L"tun2socks exited early",
       L"tun2socks exited early"},
      {"set tun address (api)", "ConvertInterfaceAliasToLuid", 0,
       L"failed to assign TUN address: unknown interface tavrin",
       L"failed to assign TUN address: unknown interface tavrin"},
      {"set tun address (api)", "ConvertInterfaceLuidToGuid", 0,
       L"failed to assign TUN address: guid lookup failed for tavrin",
       L"failed to assign TUN address: guid lookup failed for tavrin"},
      {"set tun address (api)", "CreateUnicastIpAddressEntry", 0,
       L"failed to assign TUN address: CreateUnicastIpAddressEntry failed 5",
       L"failed to assign TUN address: CreateUnicastIpAddressEntry failed 5"},
      {"tun ipv4 ready", "GetAdaptersAddresses", 0, nullptr, L"TUN adapter has no IPv4 address"},

      // The first is the deletion that makes room for the node's pin.
      {"routes installed", "ConvertInterfaceAliasToLuid", 2, L"unknown interface 以太网",
       L"unknown interface 以太网"},
      {"routes installed", "ConvertInterfaceAliasToLuid", 3, L"unknown interface tavrin",
       L"unknown interface tavrin"},
      {"routes installed", "CreateIpForwardEntry2", 2,
       L"CreateIpForwardEntry2 failed 5 for 0.0.0.0",
       L"CreateIpForwardEntry2 failed 5 for 0.0.0.0"},
      {"routes installed", "ConvertInterfaceAliasToLuid", 4, L"unknown interface tavrin",
       L"unknown interface tavrin"},
      {"routes installed", "CreateIpForwardEntry2", 3,
       L"CreateIpForwardEntry2 failed 5 for 128.0.0.0",
       L"CreateIpForwardEntry2 failed 5 for 128.0.0.0"},
      {"routes installed", "ConvertInterfaceAliasToLuid", 5, kNoSplit, kNoSplit},
      {"routes installed", "ConvertInterfaceAliasToLuid", 6, kNoSplit, kNoSplit},
      {"routes installed", "GetIpForwardTable2", 0, kNoSplit, kNoSplit},
  };
  return rules;
}

bool IsMeant(const Rule& rule, const Point& point) {
  return point.step == rule.step && Describe(point).starts_with(rule.call) &&
         (rule.ordinal == 0 || rule.ordinal == point.ordinal);
}

std::vector<Rule> RulesOf(const Scene& scene) {
  std::vector<Rule> rules = scene.panel ? PanelRules() : LocalRules();
  rules.insert(rules.end(), CommonRules().begin(), CommonRules().end());
  return rules;
}

}  // namespace

std::wstring ExpectedText(const Scene& scene, const std::vector<Point>& points, size_t index,
                          Mode mode) {
  const std::vector<Rule> rules = RulesOf(scene);
  // When everything behind it fails as well, the first call that can't be done without decides.
  const size_t end = mode == Mode::kOnce ? index + 1 : points.size();
  for (size_t i = index; i < end; ++i) {
    for (const Rule& rule : rules) {
      const wchar_t* const text = mode == Mode::kOnce ? rule.once : rule.onwards;
      if (text != nullptr && IsMeant(rule, points[i])) {
        return text;
      }
    }
  }
  return {};
}

bool IsKnownText(const Scene& scene, const std::wstring& text) {
  const std::vector<Rule> rules = RulesOf(scene);
  return text == kPortTakenText || std::any_of(rules.begin(), rules.end(), [&](const Rule& rule) {
           return text == rule.onwards || (rule.once != nullptr && text == rule.once);
         });
}

std::vector<std::string> UnreachedTexts(const Scene& scene, const std::vector<Point>& points) {
  std::vector<std::string> unreached;
  for (const Rule& rule : RulesOf(scene)) {
    const bool reached = std::any_of(points.begin(), points.end(),
                                     [&](const Point& point) { return IsMeant(rule, point); });
    if (!reached) {
      unreached.push_back(std::string(rule.step) + ": " + rule.call + " #" +
                          std::to_string(rule.ordinal));
    }
  }
  return unreached;
}

}  // namespace fault
