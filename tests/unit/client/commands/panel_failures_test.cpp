// Every command of the account against every way in which a panel fails: the interface's text as it
// stands, what to do, exit code 1, and the session as it was.
#include <windows.h>
#include <winhttp.h>

#include "tests/unit/client/panel_account_test.h"

namespace vpn {
namespace {

constexpr char kHotel[] = "<!DOCTYPE html><title>Welcome</title>";
constexpr char kFields[] =
    R"json({"message":"邮箱不能为空 (and 1 more error)","errors":{"email":["邮箱不能为空"]}})json";

constexpr char kOwn[] =
    "this is the panel's own text: do as it says, or ask whoever runs the panel";
constexpr char kRefused[] =
    "try again, or from another network: the panel's server, or something on the way, refuses the "
    "connection or breaks it off";
constexpr char kClock[] =
    "set the machine's clock; if it is right, the panel's certificate has run out, is not trusted "
    "or is for another name";
constexpr char kSignIn[] = "sign in again: the session has ended";
constexpr char kNumber[] =
    "look at the number: 401, sign in again; 404, correct apiBase; 429, wait; 5xx, read the "
    "panel's own log";
constexpr char kNoRoute[] =
    "try again, or from another network: the panel is slow, or something on the way blocks it";
constexpr char kWhere[] =
    "sign in to the network that you are in, or correct apiBase in panel.json";
constexpr char kDeviceWhere[] =
    "sign in to the network that you are in, or correct deviceApi in panel.json";

const std::map<std::string, sim::HttpAnswer>& Failures() {
  static const auto& failures = *new std::map<std::string, sim::HttpAnswer>{
      {"NoRoute", {.sendCode = ERROR_WINHTTP_TIMEOUT}},
      {"Refused", {.sendCode = ERROR_WINHTTP_CANNOT_CONNECT}},
      {"Tls", {.sendCode = ERROR_WINHTTP_SECURE_FAILURE}},
      {"SignedOut", {.status = 403, .body = R"({"message":"未登录或登陆已过期"})"}},
      {"Fields", {.status = 422, .body = kFields}},
      {"TooMany", {.status = 429, .body = R"({"message":"请求过于频繁"})"}},
      {"Page500", {.status = 500, .body = "<html>Server Error</html>"}},
      {"CutOff",
       {.body = R"({"status":"success","message":"操作成功","data":{"plan_id":2,"uuid":"7b1f")",
        .breaksAfter = 70}},
      {"WebPage", {.body = kHotel}}};
  return failures;
}

struct FailureCase {
  const char* command;
  const char* failure;
  const char* text;
  const char* whatToDo;
};

std::ostream& operator<<(std::ostream& stream, const FailureCase& one) {
  return stream << one.command << " " << one.failure;
}

const std::map<std::string, std::vector<std::wstring>>& Commands() {
  static const auto& commands = *new std::map<std::string, std::vector<std::wstring>>{
      {"login", {L"login", L"new@mail.example", L"--password-stdin"}},
      {"account", {L"account"}},
      {"register", {L"register", L"new@mail.example", L"--password-stdin"}},
      {"reset_password", {L"reset-password", L"new@mail.example", L"--password-stdin"}},
      {"plans", {L"plans"}},
      {"buy", {L"buy", L"2", L"month_price", L"--yes"}},
      {"order", {L"order", L"2026001", L"--wait"}},
      {"invite", {L"invite"}},
      {"referrals", {L"referrals"}},
      {"device", {L"device"}}};
  return commands;
}

class PanelFailures : public unit::PanelAccountTest,
                      public ::testing::WithParamInterface<FailureCase> {
 protected:
  PanelFailures() {
    machine.console.input = "secret-9\n123456\n";
    const sim::HttpAnswer answer = Failures().at(GetParam().failure);
    machine.http.Handle([answer](const sim::HttpRequestRecord&) { return std::optional(answer); });
  }
};

TEST_P(PanelFailures, IsToldWithWhatToDo) {
  const FailureCase& one = GetParam();
  EXPECT_EQ(Run(Commands().at(one.command)), 1);
  EXPECT_EQ(Err(), std::string(one.text) + "\n  What to do: " + one.whatToDo + ".\n");
  EXPECT_EQ(Out(), "");
  ExpectOldSession();
}

TEST_P(PanelFailures, AndAsJson) {
  const FailureCase& one = GetParam();
  std::vector<std::wstring> arguments = Commands().at(one.command);
  arguments.emplace_back(L"--json");
  EXPECT_EQ(Run(arguments), 1);
  EXPECT_EQ(Out(), "{\n  \"schema\": 1,\n  \"ok\": false,\n  \"error\": \"" +
                       std::string(one.text) + "\"\n}\n");
  ExpectOldSession();
}

std::string NameOf(const ::testing::TestParamInfo<FailureCase>& info) {
  return std::string(info.param.command) + "_" + info.param.failure;
}

// Commands whose first question is one of a user who is signed in.
struct PlainFailure {
  const char* failure;
  const char* text;
  const char* whatToDo;
};
constexpr PlainFailure kPlain[] = {{"NoRoute", "连接面板超时。请检查网络，或稍后再试。", kNoRoute},
                                   {"Refused", "无法连上面板服务器。", kRefused},
                                   {"Tls", "面板安全连接失败（证书或加密通道）。", kClock},
                                   {"SignedOut", "面板 HTTP 403", kSignIn},
                                   {"Fields", "面板 HTTP 422", kNumber},
                                   {"TooMany", "面板 HTTP 429", kNumber},
                                   {"Page500", "面板 HTTP 500", kNumber}};

std::vector<FailureCase> PlainCases() {
  std::vector<FailureCase> cases;
  for (const char* command : {"account", "plans", "buy", "order", "invite", "referrals"}) {
    for (const PlainFailure& plain : kPlain) {
      cases.push_back({command, plain.failure, plain.text, plain.whatToDo});
    }
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(SignedIn, PanelFailures, ::testing::ValuesIn(PlainCases()), NameOf);

// With the step and its number behind the text.
constexpr FailureCase kSigningIn[] = {
    {"login", "NoRoute", "连接面板超时。请检查网络，或稍后再试。（LOGIN 12002）", kNoRoute},
    {"login", "Refused", "无法连上面板服务器。（LOGIN 12029）", kRefused},
    {"login", "Tls", "面板安全连接失败（证书或加密通道）。（LOGIN 12175）", kClock},
    {"login", "SignedOut", "未登录或登陆已过期（LOGIN 403）", kOwn},
    {"login", "Fields", "邮箱不能为空 (and 1 more error)（LOGIN 422）", kOwn},
    {"login", "TooMany", "请求过于频繁（LOGIN 429）", kOwn},
    {"login", "Page500", "面板 HTTP 500（LOGIN 500）", kNumber},
    {"login", "CutOff", "操作成功（LOGIN 200）", kOwn},
    {"login", "WebPage", "登录失败，请检查邮箱密码或面板地址（LOGIN 200）",
     "check the email, the password and apiBase"},
    {"register", "NoRoute", "连接面板超时。请检查网络，或稍后再试。（CFG 12002）", kNoRoute},
    {"register", "Refused", "无法连上面板服务器。（CFG 12029）", kRefused},
    {"register", "Tls", "面板安全连接失败（证书或加密通道）。（CFG 12175）", kClock},
    {"register", "SignedOut", "面板 HTTP 403（CFG 403）", kNumber},
    {"register", "Fields", "面板 HTTP 422（CFG 422）", kNumber},
    {"register", "TooMany", "面板 HTTP 429（CFG 429）", kNumber},
    {"register", "Page500", "面板 HTTP 500（CFG 500）", kNumber},
    {"register", "CutOff", "操作成功（REG 200）", "sign in by hand"},
    {"register", "WebPage", "注册失败（REG 200）", "try to sign in"},
    {"reset_password", "NoRoute", "连接面板超时。请检查网络，或稍后再试。（SEND 12002）", kNoRoute},
    {"reset_password", "Refused", "无法连上面板服务器。（SEND 12029）", kRefused},
    {"reset_password", "Tls", "面板安全连接失败（证书或加密通道）。（SEND 12175）", kClock},
    {"reset_password", "SignedOut", "未登录或登陆已过期（SEND 403）", kOwn},
    {"reset_password", "Fields", "邮箱不能为空 (and 1 more error)（SEND 422）", kOwn},
    {"reset_password", "TooMany", "请求过于频繁（SEND 429）", kOwn},
    {"reset_password", "Page500", "面板 HTTP 500（SEND 500）", kNumber},
};
INSTANTIATE_TEST_SUITE_P(SigningIn, PanelFailures, ::testing::ValuesIn(kSigningIn), NameOf);

constexpr FailureCase kDevice[] = {
    {"device", "NoRoute", "连接面板超时。请检查网络，或稍后再试。", kNoRoute},
    {"device", "Refused", "无法连上面板服务器。", kRefused},
    {"device", "Tls", "面板安全连接失败（证书或加密通道）。", kClock},
    {"device", "SignedOut", "未登录或登陆已过期", kOwn},
    {"device", "Fields", "邮箱不能为空 (and 1 more error)", kOwn},
    {"device", "TooMany", "请求过于频繁", kOwn},
    {"device", "Page500", "面板 HTTP 500", kNumber},
    {"device", "CutOff", "https://device.example does not answer as a device service does",
     kDeviceWhere},
    {"device", "WebPage", "https://device.example does not answer as a device service does",
     kDeviceWhere},
};
INSTANTIATE_TEST_SUITE_P(Device, PanelFailures, ::testing::ValuesIn(kDevice), NameOf);

// A good status, and no panel's answer behind it.
constexpr char kCut[] =
    "https://panel.example answers with a text that breaks off, not as a panel does";
constexpr char kPage[] = "https://panel.example answers with a web page, not as a panel does";
constexpr char kOnSale[] = "on the panel: put a plan on sale";
constexpr char kAllow[] = "on the panel: allow users to make invite codes";
constexpr FailureCase kNoPanel[] = {
    {"account", "CutOff", kCut, kWhere},
    {"account", "WebPage", kPage, kWhere},
    {"plans", "CutOff", "面板没有可购买的套餐", kOnSale},
    {"plans", "WebPage", "面板没有可购买的套餐", kOnSale},
    {"buy", "CutOff", "面板没有可购买的套餐", kOnSale},
    {"buy", "WebPage", "面板没有可购买的套餐", kOnSale},
    {"order", "CutOff", kCut, kWhere},
    {"order", "WebPage", kPage, kWhere},
    {"invite", "CutOff", "面板没有返回邀请码", kAllow},
    {"invite", "WebPage", "面板没有返回邀请码", kAllow},
    {"referrals", "CutOff", kCut, kWhere},
    {"referrals", "WebPage", kPage, kWhere},
};
INSTANTIATE_TEST_SUITE_P(NoPanel, PanelFailures, ::testing::ValuesIn(kNoPanel), NameOf);

// Answers that look good to the operation that mails a code: the reset itself then fails.
class ResetFailures : public unit::PanelAccountTest {};

TEST_F(ResetFailures, AWebPageForEveryQuestion) {
  machine.console.input = "secret-9\n123456\n";
  machine.http.Handle([](const sim::HttpRequestRecord&) {
    return std::optional<sim::HttpAnswer>({.body = kHotel});
  });
  EXPECT_EQ(Run({L"reset-password", L"new@mail.example", L"--password-stdin"}), 1);
  EXPECT_EQ(Err(),
            "A code has been mailed to new@mail.example.\n"
            "密码已重置，请用新密码登录（RESET）\n"
            "  What to do: sign in with the new password.\n");
  ExpectOldSession();
}

}  // namespace
}  // namespace vpn
