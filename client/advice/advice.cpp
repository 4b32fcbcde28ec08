#include "client/advice/advice.h"

#include <algorithm>
#include <iterator>

namespace vpn {
namespace {

constexpr Advice kTable[] = {
    {L"检测到其他 VPN 正在使用网络（{NAME}）。请先退出 v2rayN / Clash 等客户端的 TUN "
     L"模式，再连接。",
     L"end the other VPN, or disable the adapter {NAME}", FailurePlace::kChecks},
    {L"系统代理正在开启（{SERVER}）。请先关闭 v2rayN / Clash 等客户端的系统代理，再连接。",
     L"switch the proxy off in the Internet settings of the account that the service runs under",
     FailurePlace::kChecks},
    {L"本机端口 17593 已被其他程序占用，无法建立隧道。请退出其他代理客户端后重试。",
     L"find the program with netstat -ano, end it", FailurePlace::kChecks},
    {L"no physical default gateway",
     L"connect the machine to a network; if it is connected, check route print: its only default "
     L"route leads over an adapter whose name marks it as virtual",
     FailurePlace::kElsewhere},
    {L"GetIpForwardTable2 failed",
     L"run the service with administrator's rights, or restart Windows", FailurePlace::kElsewhere},
    {L"CreateJobObject failed", L"run the service with administrator's rights, or restart Windows",
     FailurePlace::kElsewhere},
    {L"SetInformationJobObject failed",
     L"run the service with administrator's rights, or restart Windows", FailurePlace::kElsewhere},
    {L"AssignProcessToJobObject failed",
     L"run the service with administrator's rights, or restart Windows", FailurePlace::kElsewhere},
    {L"CreateProcess failed err={N}",
     L"look at the number: 2 or 3, a file is gone; 5, access denied, or a virus scanner; 740, "
     L"rights are missing; 193, the wrong architecture",
     FailurePlace::kElsewhere},
    {L"wintun adapter not created",
     L"start tun2socks by hand and read what it says: it is too old, Windows blocks Wintun's "
     L"driver, or rights are missing",
     FailurePlace::kElsewhere},
    {L"tun2socks exited early",
     L"start tun2socks by hand and read what it says: it is too old, Windows blocks Wintun's "
     L"driver, or rights are missing",
     FailurePlace::kElsewhere},
    {L"failed to assign TUN address: {DETAIL}",
     L"run the service with administrator's rights, and see whether IPv4 is switched off on the "
     L"adapter",
     FailurePlace::kElsewhere},
    {L"TUN adapter has no IPv4 address",
     L"run the service with administrator's rights, and see whether IPv4 is switched off on the "
     L"adapter",
     FailurePlace::kElsewhere},
    {L"unknown interface {ALIAS}", L"connect again: an adapter disappeared during the connect",
     FailurePlace::kElsewhere},
    {L"invalid IPv4 route {DESTINATION} via {HOP}",
     L"correct the node's address on the panel: it is mistyped", FailurePlace::kElsewhere},
    {L"CreateIpForwardEntry2 failed {N} for {DESTINATION}",
     L"for the number 5 run the service with administrator's rights; else another program holds "
     L"the route, see route print",
     FailurePlace::kElsewhere},
    {L"split default routes were not installed on TUN", L"end the program that removes the routes",
     FailurePlace::kElsewhere},
    {L"op not allowed",
     L"install a client and a service of the same version: the client sent an unknown operation",
     FailurePlace::kElsewhere},
    {L"xray.exe not found",
     L"put the file there; the runtime= line in tavrin-service.log names the directory",
     FailurePlace::kChecks},
    {L"tun2socks exe not found",
     L"put the file there; the runtime= line in tavrin-service.log names the directory",
     FailurePlace::kChecks},
    {L"wintun.dll not found next to tun2socks",
     L"put the file there; the runtime= line in tavrin-service.log names the directory",
     FailurePlace::kChecks},
    {L"cannot write generated xray config",
     L"look at the runtime directory's access list, for a full disk, and for a virus scanner: the "
     L"service can't write there, or something removed the file",
     FailurePlace::kElsewhere},
    {L"config not found",
     L"look at the runtime directory's access list, for a full disk, and for a virus scanner: the "
     L"service can't write there, or something removed the file",
     FailurePlace::kChecks},
    {L"连接核心无法启动，请换一条线路或重新登录后再试。",
     L"choose another node, or sign in again, and read xray-error.log: most often it is the node's "
     L"settings, a missing geo file, or a virus scanner",
     FailurePlace::kElsewhere},
    {L"请先登录", L"sign in", FailurePlace::kElsewhere},
    {L"not logged in", L"sign in", FailurePlace::kElsewhere},
    {L"cannot read {PATH}", L"put account.json there", FailurePlace::kElsewhere},
    {L"session does not match account",
     L"sign in again, or bring session.json and account.json together", FailurePlace::kElsewhere},
    {L"account expired", L"renew expireAt (year-month-day)", FailurePlace::kElsewhere},
    {L"account.json is missing node fields", L"put address, port and uuid into account.json",
     FailurePlace::kElsewhere},
    {L"没有可用节点", L"renew the plan, and see whether apiBase leads to a panel at all",
     FailurePlace::kElsewhere},
    {L"面板未下发可用节点，请确认节点已显示且套餐权限组一致",
     L"on the panel: show the node, and put it into the plan's group", FailurePlace::kElsewhere},
    {L"面板节点缺少地址，订阅里也没有可解析的 VLESS Reality",
     L"ask the panel for the subscription and read its answer", FailurePlace::kElsewhere},
    {L"面板地址无效", L"correct apiBase in panel.json; it needs a scheme, https://, in front",
     FailurePlace::kElsewhere},
    {L"无法初始化网络请求", L"restart Windows: WinHTTP refuses", FailurePlace::kElsewhere},
    {L"无法创建面板请求", L"restart Windows: WinHTTP refuses", FailurePlace::kElsewhere},
    {L"连接面板超时。请检查网络，或稍后再试。",
     L"try again, or from another network: the panel is slow, or something on the way blocks it",
     FailurePlace::kElsewhere},
    {L"无法解析面板域名。请检查网络或 DNS。",
     L"check the name server, and whether the domain still exists", FailurePlace::kElsewhere},
    {L"无法连上面板服务器。",
     L"try again, or from another network: the panel's server, or something on the way, refuses "
     L"the connection or breaks it off",
     FailurePlace::kElsewhere},
    {L"与面板的连接被中断。",
     L"try again, or from another network: the panel's server, or something on the way, refuses "
     L"the connection or breaks it off",
     FailurePlace::kElsewhere},
    {L"无法连接面板。", L"try again, and see whether apiBase is redirected",
     FailurePlace::kElsewhere},
    {L"面板安全连接失败（证书或加密通道）。",
     L"set the machine's clock; if it is right, the panel's certificate has run out, is not "
     L"trusted or is for another name",
     FailurePlace::kElsewhere},
    {L"面板返回了无法识别的内容。", L"correct the port in apiBase: it does not speak HTTP",
     FailurePlace::kElsewhere},
    {L"面板拒绝了这次登录请求。", L"try again", FailurePlace::kElsewhere},
    {L"面板请求已取消。", L"try again", FailurePlace::kElsewhere},
    {L"面板要求重新发送请求，请再试一次。", L"try again", FailurePlace::kElsewhere},
    {L"面板 HTTP 403", L"sign in again: the session has ended", FailurePlace::kElsewhere},
    {L"面板 HTTP {N}",
     L"look at the number: 401, sign in again; 404, correct apiBase; 429, wait; 5xx, read the "
     L"panel's own log",
     FailurePlace::kElsewhere},
    {L"登录失败，请检查邮箱密码或面板地址", L"check the email, the password and apiBase",
     FailurePlace::kElsewhere},
    {L"email or password is incorrect",
     L"give the email and the password that stand in account.json", FailurePlace::kElsewhere},
    {L"无法保存登录状态",
     L"look at the access list of session.json, and for a full disk: the program can't write it",
     FailurePlace::kElsewhere},
    {L"cannot write {PATH}",
     L"look at the access list of session.json, and for a full disk: the program can't write it",
     FailurePlace::kElsewhere},
    {L"注册失败", L"try to sign in", FailurePlace::kElsewhere},
    {L"操作成功（REG 200）", L"sign in by hand", FailurePlace::kElsewhere},
    {L"这个邮箱已经注册过了，请用下面的「去登录」进入", L"sign in", FailurePlace::kElsewhere},
    {L"密码已重置，请用新密码登录", L"sign in with the new password", FailurePlace::kElsewhere},
    {L"面板没有可购买的套餐", L"on the panel: put a plan on sale", FailurePlace::kElsewhere},
    {L"下单失败，未返回订单号", L"read the panel's log", FailurePlace::kElsewhere},
    {L"上一笔订单还在处理。未付款可再点一次购买；若已付款请关闭后刷新会员",
     L"pay or cancel the open order on the panel", FailurePlace::kElsewhere},
    {L"面板还没配置支付方式。请到后台「支付方式」添加通道，通知地址用 {ADDRESS}",
     L"on the panel: add a payment method with this notification address",
     FailurePlace::kElsewhere},
    {L"请到面板完成支付", L"look at the order's state on the panel first; if it is open, pay there",
     FailurePlace::kElsewhere},
    {L"已打开支付页面", L"pay on the page; this is no error", FailurePlace::kElsewhere},
    {L"套餐已开通", L"nothing: there was nothing to pay", FailurePlace::kElsewhere},
    {L"面板没有返回邀请码", L"on the panel: allow users to make invite codes",
     FailurePlace::kElsewhere},
    {L"无法识别这台电脑", L"start the user interface again: it gave no identity of the machine",
     FailurePlace::kElsewhere},
    {L"当前环境不支持注册",
     L"put the panel's address into apiBase of panel.json: these operations need one",
     FailurePlace::kElsewhere},
    {L"当前环境不支持发送验证码",
     L"put the panel's address into apiBase of panel.json: these operations need one",
     FailurePlace::kElsewhere},
    {L"当前环境不支持找回密码",
     L"put the panel's address into apiBase of panel.json: these operations need one",
     FailurePlace::kElsewhere},
    {L"当前环境不支持购买套餐",
     L"put the panel's address into apiBase of panel.json: these operations need one",
     FailurePlace::kElsewhere},
    {L"当前环境不支持查询订单",
     L"put the panel's address into apiBase of panel.json: these operations need one",
     FailurePlace::kElsewhere},
    {L"当前环境不支持邀请",
     L"put the panel's address into apiBase of panel.json: these operations need one",
     FailurePlace::kElsewhere},
    {L"请先在Tavrin登录", L"sign in", FailurePlace::kElsewhere},
    {L"无法获取订阅节点", L"look at the log of the panel or of the device service",
     FailurePlace::kElsewhere},
    {L"请求失败", L"look at the log of the panel or of the device service",
     FailurePlace::kElsewhere},
    {L"设备登记失败", L"look at the log of the panel or of the device service",
     FailurePlace::kElsewhere},
    {L"xray dir, tun2socks dir and config are required", L"start the service again",
     FailurePlace::kElsewhere},
};

// What stood for each value of a pattern, by the value's name.
struct Match {
  std::vector<std::pair<std::wstring, std::wstring>> values;
};

// "{NAME}" in a pattern stands for at least one unit of text.
bool Matches(std::wstring_view pattern, std::wstring_view text, Match& match) {
  for (;;) {
    const size_t open = pattern.find(L'{');
    if (open == std::wstring_view::npos) {
      return pattern == text;
    }
    if (text.substr(0, open) != pattern.substr(0, open)) {
      return false;
    }
    const size_t close = pattern.find(L'}', open);
    const std::wstring_view name = pattern.substr(open + 1, close - open - 1);
    text.remove_prefix(open);
    pattern.remove_prefix(close + 1);
    const std::wstring_view literal = pattern.substr(0, pattern.find(L'{'));
    const size_t end = literal.empty() ? text.size() : text.find(literal, 1);
    if (text.empty() || end == std::wstring_view::npos) {
      return false;
    }
    match.values.emplace_back(name, text.substr(0, end));
    text.remove_prefix(end);
  }
}

std::wstring WithValues(std::wstring text, const Match& match) {
  for (const auto& [name, value] : match.values) {
    const std::wstring mark = L"{" + name + L"}";
    if (const size_t at = text.find(mark); at != std::wstring::npos) {
      text.replace(at, mark.size(), value);
    }
  }
  return text;
}

bool Find(const std::wstring& text, FoundAdvice& found) {
  for (const Advice& entry : kTable) {
    Match match;
    if (Matches(entry.pattern, text, match)) {
      found = {WithValues(entry.whatToDo, match), entry.place};
      return true;
    }
  }
  return false;
}

}  // namespace

std::vector<Advice> AllAdvice() {
  return {std::begin(kTable), std::end(kTable)};
}

bool FindAdvice(const std::wstring& text, FoundAdvice& found) {
  // The panel's operations put the step and the status behind some texts, in brackets.
  return Find(text, found) ||
         (text.ends_with(L'）') && Find(text.substr(0, text.rfind(L'（')), found));
}

std::wstring WhatToDo(const std::wstring& text) {
  FoundAdvice found;
  if (FindAdvice(text, found)) {
    return found.whatToDo;
  }
  return L"this is the panel's own text: do as it says, or ask whoever runs the panel";
}

}  // namespace vpn
