#include "src/account/local_control_plane.h"

#include <string>
#include <utility>
#include <vector>

#include "tests/sim/text.h"
#include "tests/unit/account/local_plane_test.h"

namespace vpn {
namespace {

class LocalLogin : public LocalPlaneTest {};

TEST_F(LocalLogin, LoginWritesTheSessionLine) {
  EXPECT_TRUE(Login());
  EXPECT_EQ(error, L"earlier");
  EXPECT_EQ(machine.files.Read(sessionPath),
            "{\"email\":\"user@example.com\",\"expireAt\":\"2025-12-31\"}\n");
}

TEST_F(LocalLogin, LoginReadsTheAccountAndThenWritesTheSessionBothShared) {
  EXPECT_TRUE(Login());
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"),
            (Texts{R"("C:\run\account.json", "rb", 64)", R"("C:\run\session.json", "wb", 64)"}));
}

TEST_F(LocalLogin, LoginReplacesALongerEarlierSession) {
  PutSession(std::string(500, 'x'));
  EXPECT_TRUE(Login());
  EXPECT_EQ(machine.files.Read(sessionPath),
            "{\"email\":\"user@example.com\",\"expireAt\":\"2025-12-31\"}\n");
}

TEST_F(LocalLogin, LoginWithoutAnAccountFileNamesItsPath) {
  machine.files.Remove(accountPath);
  PutSession("as it was");
  EXPECT_FALSE(Login());
  EXPECT_EQ(error, L"cannot read C:\\run\\account.json");
  EXPECT_EQ(machine.files.Read(sessionPath), "as it was");
}

TEST_F(LocalLogin, AWrongEmailAndAWrongPasswordGiveTheSameText) {
  const std::vector<std::pair<std::wstring, std::wstring>> table = {
      {L"other@example.com", L"secret"},
      {L"user@example.com", L"wrong"},
      {L"other@example.com", L"wrong"},
      {L"User@example.com", L"secret"},
      {L"user@example.com", L"Secret"},
      {L"user@example.com ", L"secret"},
      {L"user@example.com", L"secret "},
      {L"user@example.com", L"secre"},
      {L"", L"secret"},
      {L"user@example.com", L""},
      {L"secret", L"user@example.com"},
      {std::wstring(L"user@example.com\0", 17), L"secret"},
  };
  PutSession("as it was");
  for (const auto& [email, password] : table) {
    error = L"earlier";
    EXPECT_FALSE(Login(email, password));
    EXPECT_EQ(error, L"email or password is incorrect");
  }
  EXPECT_EQ(machine.files.Read(sessionPath), "as it was");
}

TEST_F(LocalLogin, APasswordWithAnEscapedQuoteIsGivenInItsEscapedForm) {
  PutAccount({{"password", R"("password": "a\"b")"}});
  EXPECT_FALSE(Login(L"user@example.com", L"a\"b"));
  EXPECT_EQ(error, L"email or password is incorrect");
  EXPECT_TRUE(Login(L"user@example.com", L"a\\\"b"));
}

TEST_F(LocalLogin, LoginOfAnExpiredAccountLeavesTheSessionFile) {
  PutAccount({{"expireAt", R"("expireAt": "2025-06-14")"}});
  PutSession("as it was");
  EXPECT_FALSE(Login());
  EXPECT_EQ(error, L"account expired");
  EXPECT_EQ(machine.files.Read(sessionPath), "as it was");
}

TEST_F(LocalLogin, LoginWithoutAnExpiryDateIsExpired) {
  PutAccount({{"expireAt", ""}});
  EXPECT_FALSE(Login());
  EXPECT_EQ(error, L"account expired");
  EXPECT_FALSE(machine.files.Exists(sessionPath));
}

TEST_F(LocalLogin, AWrongPasswordIsToldBeforeTheExpiry) {
  PutAccount({{"expireAt", R"("expireAt": "2000-01-01")"}});
  EXPECT_FALSE(Login(L"user@example.com", L"wrong"));
  EXPECT_EQ(error, L"email or password is incorrect");
}

TEST_F(LocalLogin, LoginThatCanNotWriteTheSessionNamesItsPath) {
  PutSession();
  machine.files.SetReadOnly(sessionPath, true);
  EXPECT_FALSE(Login());
  EXPECT_EQ(error, L"cannot write C:\\run\\session.json");
}

TEST_F(LocalLogin, LoginSucceedsWhenOnlyTheWriteItselfFails) {
  PutSession("");
  machine.files.SetWritesFail(sessionPath, true);
  EXPECT_TRUE(Login());
  EXPECT_EQ(error, L"earlier");
}

TEST_F(LocalLogin, TheSessionLineIsUtf8AndTakesTheExpiryAsItStands) {
  PutAccount({{"email", R"("email": "用户😀@example.com")"},
              {"expireAt", R"("expireAt": "2025-6-15 \"x\"")"}});
  EXPECT_TRUE(Login(sim::Units(L"用户😀@example.com")));
  EXPECT_EQ(machine.files.Read(sessionPath),
            "{\"email\":\"用户😀@example.com\",\"expireAt\":\"2025-6-15 \\\"x\\\"\"}\n");
}

TEST_F(LocalLogin, TheEmailIsNotEscapedInTheSessionLine) {
  PutAccount({{"email", R"("email": "a\\b@example.com")"}});
  EXPECT_TRUE(Login(L"a\\\\b@example.com"));
  EXPECT_EQ(machine.files.Read(sessionPath),
            "{\"email\":\"a\\\\b@example.com\",\"expireAt\":\"2025-12-31\"}\n");
  EXPECT_TRUE(local.fetchAccount(session, error)) << "what was written is read back unchanged";
}

TEST_F(LocalLogin, AnAccountWithoutEmailAndPasswordTakesEmptyOnes) {
  PutAccount({{"email", ""}, {"password", ""}});
  EXPECT_TRUE(Login(L"", L""));
  EXPECT_EQ(machine.files.Read(sessionPath), "{\"email\":\"\",\"expireAt\":\"2025-12-31\"}\n");
}

TEST_F(LocalLogin, AnAccountFileWithAByteOrderMarkWorks) {
  machine.files.Put(accountPath, "\xEF\xBB\xBF" + *machine.files.Read(accountPath));
  EXPECT_TRUE(Login());
}

}  // namespace
}  // namespace vpn
