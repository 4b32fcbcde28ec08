// Signing in and out.
#include <string>

#include "tests/unit/account/xboard_test.h"

namespace vpn {
namespace {

class Login : public XboardTest {
 protected:
  void SetUp() override {
    XboardTest::SetUp();
    SignOut();
    machine.calls.Clear();
  }
  bool Try(const wchar_t* email = L"user@example.com", const wchar_t* password = L"secret") {
    return panel().login(email, password, error);
  }
  void Answers(sim::HttpAnswer first, sim::HttpAnswer second) {
    OnPost(kPath, std::move(first));
    OnPost(kPath, std::move(second));
  }
  // Fails with this text, and is signed out in memory afterwards.
  void ExpectFailure(const wchar_t* text) {
    EXPECT_FALSE(Try());
    EXPECT_EQ(error, text);
    EXPECT_EQ(Read<AuthData>(panel()), L"");
    EXPECT_EQ(machine.http.Lines().size(), 2u);
  }

  const std::string kPath = "passport/auth/login";
  const std::string kGood = R"({"data":{"token":"sub","auth_data":"Bearer new","is_admin":0}})";
};

TEST_F(Login, WithJsonCostsOneRequestAndSavesTheSession) {
  OnPost(kPath, kGood);
  error = L"earlier";
  EXPECT_TRUE(Try());
  EXPECT_EQ(Sent(), Texts{PlainPost(kPath, R"({"email":"user@example.com","password":"secret"})")});
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer new");
  EXPECT_EQ(Read<Email>(panel()), L"user@example.com");
  EXPECT_EQ(machine.files.Read(sessionPath),
            "{\"email\":\"user@example.com\",\"auth_data\":\"Bearer new\"}\n");
  EXPECT_EQ(error, L"earlier");
}

TEST_F(Login, ATokenAtTheTopLevelIsUnderstoodAsWell) {
  OnPost(kPath, R"({"token":"t"})");
  EXPECT_TRUE(Try());
  EXPECT_EQ(Read<AuthData>(panel()), L"t");
}

TEST_F(Login, APanelThatAnswersOnlyTheFormIsSignedInToInSilence) {
  Answers(Refusal(400, R"({"message":"no json"})"), Ok(kGood));
  EXPECT_TRUE(Try());
  EXPECT_EQ(Sent(), (Texts{PlainPost(kPath, R"({"email":"user@example.com","password":"secret"})"),
                           FormPost(kPath, "email=user@example.com&password=secret")}));
  EXPECT_EQ(error, L"");
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer new");
}

TEST_F(Login, TheFormIsTriedAfterEveryKindOfFailure) {
  const sim::HttpAnswer firsts[] = {Unreachable(12002), Refusal(500), Ok("<html></html>"), Ok(""),
                                    Ok(R"({"data":true})")};
  for (const sim::HttpAnswer& first : firsts) {
    machine.http.Forget();
    Answers(first, Ok(kGood));
    EXPECT_TRUE(Try());
    EXPECT_EQ(machine.http.Lines().size(), 2u);
  }
}

TEST_F(Login, SpecialCharactersAreEncodedInTheFormAndPlainInTheJson) {
  Answers(Refusal(422), Ok(kGood));
  EXPECT_TRUE(Try(L"a+b@example.com", L"p+q&r s~"));
  EXPECT_EQ(Sent(), (Texts{PlainPost(kPath, R"({"email":"a+b@example.com","password":"p+q&r s~"})"),
                           FormPost(kPath, "email=a%2Bb@example.com&password=p%2Bq%26r%20s%7E")}));
}

TEST_F(Login, TheJsonIsEscapedAndTheFormIsNot) {
  Answers(Refusal(422), Ok(kGood));
  EXPECT_TRUE(Try(L"中@example.com", L"a\"b\\c\nd\te"));
  EXPECT_EQ(
      Sent(),
      (Texts{PlainPost(kPath, "{\"email\":\"中@example.com\",\"password\":\"a\\\"b\\\\c\\nd\te\"}"),
             FormPost(kPath, "email=%E4%B8%AD@example.com&password=a%22b%5Cc%0Ad%09e")}));
}

TEST_F(Login, NoCredentialIsSentEvenWhenThereIsOne) {
  SignIn();
  OnPost(kPath, kGood);
  EXPECT_TRUE(Try());
  EXPECT_EQ(Sent(), Texts{PlainPost(kPath, R"({"email":"user@example.com","password":"secret"})")});
}

TEST_F(Login, ThePanelsMessageOfTheSecondAttemptIsShownWithItsStatus) {
  Answers(Refusal(400, R"({"message":"first"})"),
          Refusal(422, R"({"message":"\u90ae\u7bb1\u6216\u5bc6\u7801\u9519\u8bef"})"));
  ExpectFailure(L"邮箱或密码错误（LOGIN 422）");
}

// The panel counts both forms, so the third wrong password is already one too many.
TEST_F(Login, AWrongPasswordIsCountedTwiceByThePanel) {
  int tries = 0;
  machine.http.Handle([&](const sim::HttpRequestRecord&) -> std::optional<sim::HttpAnswer> {
    return ++tries <= 5
               ? Refusal(400, R"({"message":"\u90ae\u7bb1\u6216\u5bc6\u7801\u9519\u8bef"})")
               : Refusal(429, R"({"message":"\u5bc6\u7801\u9519\u8bef\u6b21\u6570\u8fc7\u591a"})");
  });
  EXPECT_FALSE(Try());
  EXPECT_FALSE(Try());
  EXPECT_EQ(error, L"邮箱或密码错误（LOGIN 400）");
  EXPECT_FALSE(Try());
  EXPECT_EQ(error, L"密码错误次数过多（LOGIN 429）");
}

TEST_F(Login, WithoutAMessageTheTransportsTextIsShown) {
  Answers(Refusal(400, R"({"message":"first"})"), Refusal(500, R"({"message": ""})"));
  ExpectFailure(L"面板 HTTP 500（LOGIN 500）");
}

TEST_F(Login, ASecondAttemptThatGetsNoAnswerLeavesTheFirstOnesMessage) {
  Answers(Refusal(403, R"({"message":"first"})"), Unreachable(12029));
  ExpectFailure(L"first（LOGIN 12029）");
}

TEST_F(Login, WithNoAnswerAtAllTheTransportsTextAndCodeAreShown) {
  Answers(Unreachable(12007), Unreachable(12002));
  ExpectFailure(L"连接面板超时。请检查网络，或稍后再试。（LOGIN 12002）");
}

TEST_F(Login, ASuccessWithoutACredentialHasALineOfItsOwn) {
  Answers(Ok("{}"), Ok("<!DOCTYPE html><html></html>"));
  ExpectFailure(L"登录失败，请检查邮箱密码或面板地址（LOGIN 200）");
}

TEST_F(Login, ASuccessWithoutACredentialButWithAMessageShowsTheMessage) {
  Answers(Ok("{}"), Ok(R"({"message":"later"})"));
  ExpectFailure(L"later（LOGIN 200）");
}

TEST_F(Login, AStatusThatCanNotBeReadIsLeftOut) {
  Answers(Ok("{}"), {.body = "{}", .statusUnreadable = true});
  ExpectFailure(L"登录失败，请检查邮箱密码或面板地址（LOGIN）");
}

TEST_F(Login, TheCallersErrorIsForgotten) {
  error = L"earlier";
  Answers(Unreachable(), Ok("{}"));
  ExpectFailure(L"登录失败，请检查邮箱密码或面板地址（LOGIN 200）");
}

TEST_F(Login, AFailureSignsOutInMemoryAndKeepsTheFile) {
  SignIn();
  Answers(Refusal(422), Refusal(422));
  EXPECT_FALSE(Try(L"other@example.com"));
  EXPECT_EQ(Read<AuthData>(panel()), L"");
  EXPECT_EQ(Read<Email>(panel()), L"user@example.com");
  Build();
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer abc");
}

TEST_F(Login, ASessionThatCanNotBeSavedStaysInMemory) {
  machine.files.PutDirectory(sessionPath);
  OnPost(kPath, kGood);
  EXPECT_FALSE(Try());
  EXPECT_EQ(error, L"无法保存登录状态");
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer new");
  EXPECT_EQ(Read<Email>(panel()), L"user@example.com");
  EXPECT_EQ(machine.http.Lines().size(), 1u);
}

TEST_F(Login, TheAddressIsKeptAsItWasTyped) {
  OnPost(kPath, R"({"data":{"auth_data":"a","email":"other@example.com"}})");
  EXPECT_TRUE(Try(L" User@Example.com"));
  EXPECT_EQ(Read<Email>(panel()), L" User@Example.com");
}

TEST_F(Login, ANewObjectIsStillSignedInAndALogoutEndsThat) {
  OnPost(kPath, kGood);
  EXPECT_TRUE(Try());
  Build();
  EXPECT_EQ(Read<AuthData>(panel()), L"Bearer new");
  EXPECT_EQ(Read<Email>(panel()), L"user@example.com");
  machine.http.Forget();
  EXPECT_TRUE(panel().logout());
  EXPECT_EQ(machine.http.Lines(), Texts());
  Build();
  EXPECT_EQ(Read<AuthData>(panel()), L"");
}

TEST_F(Login, TheCredentialIsSentAsItIsWhateverItLooksLike) {
  OnPost(kPath, R"({"data":{"auth_data":"eyJ0\/x.y=="}})");
  EXPECT_TRUE(Try());
  machine.http.Forget();
  OnGet("user/plan/fetch", "{}");
  std::vector<PlanOption> plans;
  EXPECT_FALSE(panel().fetchPlans(plans, error));
  EXPECT_EQ(machine.http.Requests().at(0).headers,
            "Accept: application/json\r\nUser-Agent: Tavrin/0.1\r\n"
            "Authorization: eyJ0/x.y==\r\nauth_data: eyJ0/x.y==\r\n");
}

TEST_F(Login, SlashesAtTheEndOfThePanelsAddressDoNotDouble) {
  Build(L"https://panel.example//\\/");
  OnPost(kPath, kGood);
  EXPECT_TRUE(Try());
  EXPECT_EQ(Paths(), Texts{"POST passport/auth/login"});
}

TEST_F(Login, ASessionFileThatIsCutAnywhereIsNoError) {
  const std::string whole = "{\"email\":\"user@example.com\",\"auth_data\":\"Bearer abc\"}\n";
  for (size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    machine.files.Put(sessionPath, whole.substr(0, length));
    Build();
    // The credential stands at 41 to 50; a text that is cut runs to the end of the file.
    const std::string credential = length <= 41 ? "" : whole.substr(0, length).substr(41, 10);
    EXPECT_EQ(Read<AuthData>(panel()), std::wstring(credential.begin(), credential.end()));
  }
}

TEST_F(Login, ASessionFileWithOtherKeysBlanksAndAByteOrderMarkIsRead) {
  machine.files.Put(sessionPath,
                    "\xEF\xBB\xBF{ \"v\" : 1,\r\n \"auth_data\" :\t \"a\" , \"email\":  \"e\" }");
  Build();
  EXPECT_EQ(Read<AuthData>(panel()), L"a");
  EXPECT_EQ(Read<Email>(panel()), L"e");
}

TEST_F(Login, AHugeSessionFileAndOneWithNulsAreReadToTheirEnd) {
  machine.files.Put(sessionPath, std::string(8 * 1024 * 1024, ' ') + R"("auth_data":"a")");
  Build();
  EXPECT_EQ(Read<AuthData>(panel()), L"a");
  machine.files.Put(sessionPath, std::string("\0\0\"auth_data\":\"a\0b\"", 19));
  Build();
  EXPECT_EQ(Read<AuthData>(panel()), std::wstring(L"a\0b", 3));
}

TEST_F(Login, ACredentialThatIsNoUtf8IsNoError) {
  machine.files.Put(sessionPath, "{\"auth_data\":\"a\xFF\"}");
  Build();
  EXPECT_EQ(Read<AuthData>(panel()), L"a\xFFFD");
}

TEST_F(Login, ACredentialWithAQuoteDoesNotSurviveTheFile) {
  OnPost(kPath, R"({"data":{"auth_data":"a\"b"}})");
  EXPECT_TRUE(Try());
  EXPECT_EQ(Read<AuthData>(panel()), L"a\"b");
  Build();
  EXPECT_EQ(Read<AuthData>(panel()), L"a");
}

}  // namespace
}  // namespace vpn
