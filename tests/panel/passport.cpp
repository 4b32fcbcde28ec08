// What a user does who is not signed in.
#include "tests/panel/endpoints.h"

namespace panel {
namespace {

constexpr int kAllowedFailures = 5;

std::vector<std::pair<std::string, std::string>> Missing(const Call& call) {
  std::vector<std::pair<std::string, std::string>> complaints;
  if (call.Text("email").empty()) complaints.emplace_back("email", "邮箱不能为空");
  if (call.Text("password").empty()) complaints.emplace_back("password", "密码不能为空");
  return complaints;
}

// A new credential at each sign-in; earlier ones stay good.
Json SignIn(Json& state, Json& user) {
  const std::string credential = "Bearer " + FreshText(state, 48);
  user["sessions"].push_back(credential);
  return {{"token", user["token"]}, {"auth_data", credential}, {"is_admin", false}};
}

Json NewUser(Json& state, const std::string& email, const std::string& password) {
  Json user = state["newUser"];
  user["id"] = state["users"].size() + 1;
  user["email"] = email;
  user["password"] = password;
  user["token"] = FreshText(state, 32);
  user["uuid"] = "00000000-0000-4000-8000-" + FreshDigits(state, 12);
  return user;
}

bool TakeMailCode(Call& call) {
  Json& codes = call.state["mailCodes"];
  const auto code = codes.find(call.Text("email"));
  if (code == codes.end() || *code != call.Text("email_code")) return false;
  codes.erase(code);
  return true;
}

// A code is used up by the registration that names it.
bool TakeInviteCode(Json& state, const std::string& code) {
  for (Json& user : state["users"]) {
    if (Json* const row = FindBy(user["codes"], "code", code)) {
      (*row)["status"] = 1;
      return true;
    }
  }
  return false;
}

}  // namespace

Reply GuestConfig(Call& call) {
  const Json& config = call.state["config"];
  return Success(call.state, {{"tos_url", nullptr},
                              {"is_email_verify", config["is_email_verify"]},
                              {"is_invite_force", config["is_invite_force"]},
                              {"email_whitelist_suffix", 0},
                              {"is_captcha", config["is_recaptcha"]},
                              {"captcha_type", "recaptcha"},
                              {"app_description", "Tavrin 面板"},
                              {"app_url", "https://panel.example"},
                              {"logo", nullptr},
                              {"is_recaptcha", config["is_recaptcha"]}});
}

Reply Login(Call& call) {
  if (const auto missing = Missing(call); !missing.empty()) return Invalid(call.state, missing);
  const std::string email = call.Text("email");
  Json& failures = call.state["loginFailures"][email];
  if (failures.is_number() && failures >= kAllowedFailures) {
    return Refusal(call.state, 429, "密码错误次数过多，请 60 分钟后再试");
  }
  Json* const user = FindBy(call.state["users"], "email", email);
  if (user == nullptr || (*user)["password"] != call.Text("password")) {
    failures = (failures.is_number() ? failures.get<int>() : 0) + 1;
    return Refusal(call.state, 400, "邮箱或密码错误");
  }
  if ((*user)["banned"] == true) return Refusal(call.state, 400, "该账户已被停止使用");
  return Success(call.state, SignIn(call.state, *user));
}

Reply Register(Call& call) {
  if (const auto missing = Missing(call); !missing.empty()) return Invalid(call.state, missing);
  Json& config = call.state["config"];
  const std::string email = call.Text("email");
  const std::string invite = call.Text("invite_code");
  if (config["is_recaptcha"] == 1) return Refusal(call.state, 400, "验证码有误");
  if (FindBy(call.state["users"], "email", email) != nullptr) {
    return Refusal(call.state, 400, "邮箱已在系统中存在");
  }
  if (config["is_invite_force"] == 1 && invite.empty()) {
    return Refusal(call.state, 422, "必须使用邀请码才可以注册");
  }
  if (config["is_email_verify"] == 1 && !TakeMailCode(call)) {
    return Refusal(call.state, 400, "邮箱验证码有误");
  }
  if (!invite.empty() && !TakeInviteCode(call.state, invite)) {
    return Refusal(call.state, 400, "邀请码无效");
  }
  Json user = NewUser(call.state, email, call.Text("password"));
  Json data = SignIn(call.state, user);
  call.state["users"].push_back(user);
  if (call.state["registerSignsIn"] != true) data = true;
  return Success(call.state, data);
}

Reply Forget(Call& call) {
  if (const auto missing = Missing(call); !missing.empty()) return Invalid(call.state, missing);
  Json* const user = FindBy(call.state["users"], "email", call.Text("email"));
  if (!TakeMailCode(call)) return Refusal(call.state, 400, "邮箱验证码有误");
  if (user == nullptr) return Refusal(call.state, 400, "该邮箱不存在系统中");
  (*user)["password"] = call.Text("password");
  (*user)["sessions"] = Json::array();
  return Success(call.state, true);
}

Reply SendEmailVerify(Call& call) {
  const std::string email = call.Text("email");
  if (email.empty()) return Invalid(call.state, {{"email", "邮箱不能为空"}});
  if (call.state["config"]["is_recaptcha"] == 1) return Refusal(call.state, 400, "验证码有误");
  if (call.state["mailCodes"].contains(email)) {
    return Refusal(call.state, 400, "验证码已发送，请过一会再请求");
  }
  call.state["mailCodes"][email] = FreshDigits(call.state, 6);
  return Success(call.state, true);
}

}  // namespace panel
