// What a user without a working login does: what a registration needs, codes by mail, registering,
// setting a new password.
#include <string>
#include <utility>

#include "tests/unit/account/xboard_test.h"

namespace vpn {
namespace {

constexpr char kGoodLogin[] = R"({"data":{"auth_data":"Bearer new"}})";

class RegistrationNeeds : public XboardTest {
 protected:
  bool Fetch() {
    config = {true, true, true};
    return panel().fetchRegisterConfig(config, error);
  }
  void ExpectFlags(bool emailVerify, bool inviteForce, bool recaptcha) {
    EXPECT_EQ(config.emailVerify, emailVerify);
    EXPECT_EQ(config.inviteForce, inviteForce);
    EXPECT_EQ(config.recaptcha, recaptcha);
  }

  const std::string kGuest = "guest/comm/config";
  const std::string kPassport = "passport/comm/config";
  RegisterConfig config;
};

TEST_F(RegistrationNeeds, AreReadWithoutTheCredential) {
  OnGet(kGuest, R"({"data":{"is_email_verify":1,"is_invite_force":0,"is_recaptcha":1}})");
  EXPECT_TRUE(Fetch());
  ExpectFlags(true, false, true);
  EXPECT_EQ(Sent(), Texts{PlainGet(kGuest)});
  EXPECT_EQ(error, L"");
}

TEST_F(RegistrationNeeds, EachFlagIsTrueOrANumberOtherThan0) {
  const std::pair<const char*, bool> rows[] = {{"1", true},     {"true", true},   {"2", true},
                                               {"0", false},    {"false", false}, {"null", false},
                                               {"\"1\"", false}};
  for (const auto& [value, expected] : rows) {
    SCOPED_TRACE(value);
    OnGet(kGuest, R"({"data":{"is_invite_force":)" + std::string(value) + "}}");
    EXPECT_TRUE(Fetch());
    ExpectFlags(false, expected, false);
  }
}

TEST_F(RegistrationNeeds, AWebPageNeedsNothing) {
  OnGet(kGuest, "<html></html>");
  EXPECT_TRUE(Fetch());
  ExpectFlags(false, false, false);
}

TEST_F(RegistrationNeeds, APanelWithTheSecondPathAloneIsUnderstood) {
  OnGet(kGuest, Refusal(404, R"({"is_recaptcha":1})"));
  OnGet(kPassport, R"({"data":{"is_email_verify":1}})");
  EXPECT_TRUE(Fetch());
  ExpectFlags(true, false, false);
  EXPECT_EQ(Sent(), (Texts{PlainGet(kGuest), PlainGet(kPassport)}));
  EXPECT_EQ(error, L"");
}

TEST_F(RegistrationNeeds, WhenBothPathsFailTheSecondsTextIsShown) {
  OnGet(kGuest, Unreachable(12002));
  OnGet(kPassport, Refusal(404, R"({"message":"Not Found"})"));
  error = L"earlier";
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"面板 HTTP 404（CFG 404）");
  ExpectFlags(false, false, false);
}

TEST_F(RegistrationNeeds, WithoutAnAnswerTheCodeIsShown) {
  OnGet(kGuest, Refusal(500));
  OnGet(kPassport, Unreachable(12007));
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"无法解析面板域名。请检查网络或 DNS。（CFG 12007）");
}

TEST_F(RegistrationNeeds, WithoutAStatusTheStepStandsAlone) {
  machine.faults.FailAlways("WinHttpOpenRequest");
  EXPECT_FALSE(Fetch());
  EXPECT_EQ(error, L"无法创建面板请求（CFG）");
}

class EmailCode : public XboardTest {
 protected:
  const std::string kPath = "passport/comm/sendEmailVerify";
};

TEST_F(EmailCode, IsAskedForWithoutTheCredential) {
  OnPost(kPath, R"({"data":true})");
  error = L"earlier";
  EXPECT_TRUE(panel().sendEmailCode(L"中\"@example.com", error));
  EXPECT_EQ(Sent(), Texts{PlainPost(kPath, R"({"email":"中\"@example.com"})")});
  EXPECT_EQ(error, L"earlier");
}

TEST_F(EmailCode, AnAnswerIsNotReadFurther) {
  OnPost(kPath, R"({"data":false,"message":"no"})");
  EXPECT_TRUE(panel().sendEmailCode(L"a", error));
}

TEST_F(EmailCode, ThePanelsMessageIsShownWithItsStatus) {
  OnPost(kPath, Refusal(400, R"({"message":"\u9a8c\u8bc1\u7801\u6709\u8bef"})"));
  EXPECT_FALSE(panel().sendEmailCode(L"a", error));
  EXPECT_EQ(error, L"验证码有误（SEND 400）");
}

TEST_F(EmailCode, WithoutAMessageTheTransportsTextIsShown) {
  OnPost(kPath, Refusal(429, "<html></html>"));
  EXPECT_FALSE(panel().sendEmailCode(L"a", error));
  EXPECT_EQ(error, L"面板 HTTP 429（SEND 429）");
  OnPost(kPath, Unreachable(12175));
  EXPECT_FALSE(panel().sendEmailCode(L"a", error));
  EXPECT_EQ(error, L"面板安全连接失败（证书或加密通道）。（SEND 12175）");
}

TEST_F(EmailCode, WithoutAStatusTheStepStandsAlone) {
  machine.faults.FailAlways("WinHttpOpenRequest");
  EXPECT_FALSE(panel().sendEmailCode(L"a", error));
  EXPECT_EQ(error, L"无法创建面板请求（SEND）");
}

class PasswordReset : public XboardTest {
 protected:
  bool Reset() {
    return panel().resetPassword(L"user@example.com", L"12\"3", L"new\\secret", error);
  }
  const std::string kPath = "passport/auth/forget";
  const std::string kLogin = "passport/auth/login";
};

TEST_F(PasswordReset, SignsInWithTheNewPassword) {
  OnPost(kPath, R"({"data":true})");
  OnPost(kLogin, kGoodLogin);
  error = L"earlier";
  EXPECT_TRUE(Reset());
  EXPECT_EQ(error, L"earlier");
  EXPECT_EQ(
      Sent(),
      (Texts{PlainPost(
                 kPath,
                 R"({"email":"user@example.com","email_code":"12\"3","password":"new\\secret"})"),
             PlainPost(kLogin, R"({"email":"user@example.com","password":"new\\secret"})")}));
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer new");
  EXPECT_EQ(machine.files.Read(sessionPath),
            "{\"email\":\"user@example.com\",\"auth_data\":\"Bearer new\"}\n");
}

TEST_F(PasswordReset, AnEmptyCodeIsSentAllTheSame) {
  OnPost(kPath, Refusal(400));
  EXPECT_FALSE(panel().resetPassword(L"", L"", L"", error));
  EXPECT_EQ(Sent(), Texts{PlainPost(kPath, R"({"email":"","email_code":"","password":""})")});
}

TEST_F(PasswordReset, ARefusalShowsThePanelsMessageAndSignsNobodyOut) {
  OnPost(kPath, Refusal(400, R"({"message":"\u9a8c\u8bc1\u7801\u6709\u8bef"})"));
  EXPECT_FALSE(Reset());
  EXPECT_EQ(error, L"验证码有误（RESET 400）");
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer abc");
  EXPECT_EQ(machine.http.Lines().size(), 1u);
}

TEST_F(PasswordReset, WithoutAMessageTheTransportsTextIsShown) {
  OnPost(kPath, Refusal(500, R"({"message": ""})"));
  EXPECT_FALSE(Reset());
  EXPECT_EQ(error, L"面板 HTTP 500（RESET 500）");
  OnPost(kPath, Unreachable(12030));
  EXPECT_FALSE(Reset());
  EXPECT_EQ(error, L"与面板的连接被中断。（RESET 12030）");
}

TEST_F(PasswordReset, AResetWhoseLoginFailsIsToldAsOne) {
  OnPost(kPath, R"({"data":true})");
  OnPost(kLogin, Refusal(429, R"({"message":"later"})"));
  OnPost(kLogin, Refusal(429, R"({"message":"later"})"));
  EXPECT_FALSE(Reset());
  EXPECT_EQ(error, L"密码已重置，请用新密码登录（RESET）");
  EXPECT_EQ(Read<AuthData>(panel()), L"");
}

TEST_F(PasswordReset, AResetWhoseSessionCanNotBeSavedIsToldTheSameWay) {
  machine.files.SetReadOnly(sessionPath, true);
  OnPost(kPath, R"({"data":true})");
  OnPost(kLogin, kGoodLogin);
  EXPECT_FALSE(Reset());
  EXPECT_EQ(error, L"密码已重置，请用新密码登录（RESET）");
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer new");
}

}  // namespace
}  // namespace vpn
