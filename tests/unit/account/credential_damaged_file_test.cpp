// The panel's `session.json`, damaged in every way, and what must never damage it: an attempt to
// sign in that fails.
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/account/xboard_test.h"

namespace vpn {
namespace {

constexpr size_t kHuge = 16 * 1024 * 1024;
constexpr char kWhole[] = "{\"email\":\"a@b\",\"auth_data\":\"xyz\"}\n";

class DamagedSessionFile : public XboardTest {
 protected:
  // Email and credential that a new object finds.
  std::pair<std::wstring, std::wstring> Found(std::string content) {
    machine.files.Put(sessionPath, std::move(content));
    Build();
    return {Read<Email>(panel()), Read<AuthData>(panel())};
  }
  static std::pair<std::wstring, std::wstring> Is(const std::wstring& email,
                                                  const std::wstring& credential) {
    return {email, credential};
  }
};

TEST_F(DamagedSessionFile, CutAnywhereGivesEachValueAsFarAsItGoes) {
  const std::string whole = kWhole;
  ASSERT_EQ(whole.size(), 34u);
  const auto at = [&](size_t length) { return Found(whole.substr(0, length)); };
  for (size_t length = 0; length <= 10; ++length) {
    EXPECT_EQ(at(length), Is(L"", L"")) << length;
  }
  EXPECT_EQ(at(11), Is(L"a", L""));
  EXPECT_EQ(at(12), Is(L"a@", L""));
  for (size_t length = 13; length <= 28; ++length) {
    EXPECT_EQ(at(length), Is(L"a@b", L"")) << length;
  }
  EXPECT_EQ(at(29), Is(L"a@b", L"x"));
  EXPECT_EQ(at(30), Is(L"a@b", L"xy"));
  for (size_t length = 31; length <= 34; ++length) {
    EXPECT_EQ(at(length), Is(L"a@b", L"xyz")) << length;
  }
}

TEST_F(DamagedSessionFile, ThatMeansSignedOutSendsNothing) {
  for (const std::string& content :
       {std::string(), std::string(64, '\0'), std::string("\xFF\xFE{\0\"\0", 6),
        std::string("{\"email\":\"a@b\",\"auth_data\":\"")}) {
    (void)Found(content);
    AccountSession session;
    error = L"earlier";
    EXPECT_FALSE(panel().fetchAccount(session, error));
    EXPECT_EQ(error, L"请先登录");
    EXPECT_EQ(Sent(), Texts{});
    EXPECT_EQ(machine.files.Read(sessionPath), content);
  }
}

TEST_F(DamagedSessionFile, SavedAsUtf16MeansSignedOut) {
  std::string little = "\xFF\xFE";
  std::string big = "\xFE\xFF";
  for (const char byte : std::string(kWhole)) {
    little += {byte, '\0'};
    big += {'\0', byte};
  }
  EXPECT_EQ(Found(little), Is(L"", L""));
  EXPECT_EQ(Found(big), Is(L"", L""));
}

TEST_F(DamagedSessionFile, NulsAreBytesLikeAnyOther) {
  EXPECT_EQ(Found(std::string("\0{\"email\":\"a\0b\",\"auth_data\":\"\0\"}", 32)),
            Is(std::wstring(L"a\0b", 3), std::wstring(1, L'\0')));
  EXPECT_EQ(Found(std::string("{\"auth\0data\":\"x\",\"email\":\"e\"}", 29)), Is(L"e", L""));
}

TEST_F(DamagedSessionFile, BytesThatAreNoUtf8BecomeReplacementCharacters) {
  EXPECT_EQ(Found("\x80{\"email\":\"\xC3(\",\"auth_data\":\"x\xED\xA0\x80\"}"),
            Is(L"\xFFFD(", L"x\xFFFD\xFFFD"));
}

TEST_F(DamagedSessionFile, HugeFileIsReadToItsEnd) {
  EXPECT_EQ(Found(std::string(kHuge, '\0')), Is(L"", L""));
  EXPECT_EQ(Found(std::string(kHuge, '"')), Is(L"", L""));
  EXPECT_EQ(Found(std::string(kHuge, ' ') + kWhole), Is(L"a@b", L"xyz"));
}

TEST_F(DamagedSessionFile, ValueThatNeverEndsIsTakenAsItStands) {
  const size_t length = 1024 * 1024;
  const std::string endless(length, 'x');
  EXPECT_EQ(Found("{\"email\":\"a@b\",\"auth_data\":\"" + endless),
            Is(L"a@b", std::wstring(length, L'x')));
}

TEST_F(DamagedSessionFile, IsReplacedWholeByTheNextLogin) {
  (void)Found(std::string(kHuge, '\0'));
  OnPost("passport/auth/login", R"({"data":{"auth_data":"new"}})");
  EXPECT_TRUE(panel().login(L"a@b", L"p", error));
  EXPECT_EQ(machine.files.Read(sessionPath), "{\"email\":\"a@b\",\"auth_data\":\"new\"}\n");
}

// The file of an earlier session, sound or damaged, against every way in which signing in can fail.
class KeptSessionFile : public DamagedSessionFile {
 protected:
  struct Failure {
    const char* what;
    sim::HttpAnswer answer;
  };
  static std::vector<Failure> Failures() {
    return {{"no connection", Unreachable()},
            {"a time-out", {.receiveCode = 12002}},
            {"an untrusted certificate", Unreachable(12175)},
            {"a refusal", Refusal(403, R"({"message":"\u4e0d"})")},
            {"a refusal without a text", Refusal(500)},
            {"an answer without a credential", Ok(R"({"status":"success","data":null})")},
            {"a web page", Ok("<!DOCTYPE html><html></html>")},
            {"nothing", Ok("")},
            {"an answer that breaks off", {.body = R"({"data":{"auth_data":)", .breaksAfter = 9}}};
  }
  static std::vector<std::string> Files() {
    return {kWhole, "", std::string("\0\xFF\xFE{", 4), "{\"email\":\"a@b\",\"auth_data\":\"x"};
  }

  // Runs `attempt`, which must fail, against each failure on each file.
  template <class Attempt>
  void ExpectKept(const std::string& path, const Attempt& attempt) {
    for (const Failure& failure : Failures()) {
      for (const std::string& file : Files()) {
        SCOPED_TRACE(failure.what);
        machine.http.On("POST", kApi + path, failure.answer);
        (void)Found(file);
        EXPECT_FALSE(attempt());
        EXPECT_NE(error, L"");
        EXPECT_EQ(machine.files.Read(sessionPath), file);
      }
    }
  }
};

TEST_F(KeptSessionFile, ByALoginThatFails) {
  ExpectKept("passport/auth/login", [this] {
    const bool good = panel().login(L"a@b", L"p", error);
    EXPECT_EQ(Read<AuthData>(panel()), L"") << "signed out in memory";
    return good;
  });
}

TEST_F(KeptSessionFile, ByARegistrationThatFails) {
  machine.http.On("POST", kApi + "passport/auth/login", Refusal(500));
  ExpectKept("passport/auth/register",
             [this] { return panel().registerAccount(L"a@b", L"p", L"", L"", error); });
}

TEST_F(KeptSessionFile, ByAResetThatIsRefused) {
  for (const std::string& file : Files()) {
    (void)Found(file);
    machine.http.On("POST", kApi + "passport/auth/forget", Refusal(400, R"({"message":"x"})"));
    EXPECT_FALSE(panel().resetPassword(L"a@b", L"123456", L"p", error));
    EXPECT_EQ(machine.files.Read(sessionPath), file);
  }
}

TEST_F(KeptSessionFile, ByALoginWhoseFileCanNotBeOpened) {
  (void)Found(kWhole);
  machine.files.SetLocked(sessionPath, true);
  OnPost("passport/auth/login", R"({"data":{"auth_data":"new"}})");
  EXPECT_FALSE(panel().login(L"a@b", L"p", error));
  EXPECT_EQ(error, L"无法保存登录状态");
  EXPECT_EQ(machine.files.Read(sessionPath), kWhole);
}

}  // namespace
}  // namespace vpn
