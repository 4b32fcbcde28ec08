// The local backend's `account.json` and `session.json`, damaged in every way.
#include <string>
#include <utility>

#include "tests/unit/account/local_plane_test.h"

namespace vpn {
namespace {

constexpr size_t kHuge = 16 * 1024 * 1024;
constexpr char kSmallSession[] = "{\"email\":\"a@b\",\"expireAt\":\"2030-01-02\"}\n";
constexpr char kSmallAccount[] =
    R"({"email":"a@b","password":"p","expireAt":"2030-01-02","address":"h","port":443,"uuid":"u"})";

class DamagedLocalFiles : public LocalPlaneTest {
 protected:
  void SetUp() override {
    LocalPlaneTest::SetUp();
    machine.files.Put(sessionPath, kSmallSession);
    machine.files.Put(accountPath, kSmallAccount);
  }

  // The error of a fetch, empty when it succeeds.
  std::wstring Fetch() {
    error.clear();
    const bool good = local.fetchAccount(session, error);
    EXPECT_EQ(good, error.empty());
    return error;
  }
  std::wstring FetchWithSession(std::string content) {
    machine.files.Put(sessionPath, std::move(content));
    return Fetch();
  }
  std::wstring FetchWithAccount(std::string content) {
    machine.files.Put(accountPath, std::move(content));
    return Fetch();
  }
  static std::string AsUtf16(const std::string& text) {
    std::string units = "\xFF\xFE";
    for (const char byte : text) {
      units += {byte, '\0'};
    }
    return units;
  }
};

TEST_F(DamagedLocalFiles, SessionThatIsCutBeforeItsEmailEndsDoesNotMatch) {
  const std::string whole = kSmallSession;
  for (size_t length = 0; length <= 12; ++length) {
    EXPECT_EQ(FetchWithSession(whole.substr(0, length)), L"session does not match account")
        << length;
    EXPECT_EQ(session.nodes.size(), 0u);
  }
  for (size_t length = 13; length <= 40; ++length) {
    EXPECT_EQ(FetchWithSession(whole.substr(0, length)), L"") << length;
    EXPECT_EQ(session.email, L"a@b");
    EXPECT_EQ(session.nodes.size(), 1u);
  }
}

TEST_F(DamagedLocalFiles, AccountThatIsCutSaysWhatIsMissingFirst) {
  const std::string whole = kSmallAccount;
  ASSERT_EQ(whole.size(), 90u);
  for (size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    const std::wstring text = FetchWithAccount(whole.substr(0, length));
    if (length <= 12) {
      EXPECT_EQ(text, L"session does not match account");
    } else if (length <= 50) {  // "2030-01-" is no date, "2030-01-0" is
      EXPECT_EQ(text, L"account expired");
    } else if (length <= 87) {
      EXPECT_EQ(text, L"account.json is missing node fields");
    } else {
      EXPECT_EQ(text, L"");
      EXPECT_EQ(session.nodes.at(0).uuid, L"u");
    }
    EXPECT_EQ(session.nodes.size(), length <= 50 ? 0u : 1u);
  }
}

TEST_F(DamagedLocalFiles, AccountThatIsCutLetsOnlyItsOwnPasswordIn) {
  const std::string whole = kSmallAccount;
  for (size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    machine.files.Put(accountPath, whole.substr(0, length));
    machine.files.Put(sessionPath, "earlier");
    EXPECT_FALSE(Login(L"a@b", L"other"));
    EXPECT_EQ(error, L"email or password is incorrect");
    error.clear();
    const bool good = Login(L"a@b", L"p");
    // The password is the byte at 27; the date is one as soon as it has a day.
    EXPECT_EQ(error, length <= 27   ? L"email or password is incorrect"
                     : length <= 50 ? L"account expired"
                                    : L"");
    EXPECT_EQ(good, length > 50);
    EXPECT_EQ(machine.files.Read(sessionPath),
              length <= 50   ? "earlier"
              : length == 51 ? "{\"email\":\"a@b\",\"expireAt\":\"2030-01-0\"}\n"
                             : kSmallSession);
  }
}

TEST_F(DamagedLocalFiles, OfNulsAlone) {
  EXPECT_EQ(FetchWithSession(std::string(4096, '\0')), L"session does not match account");
  machine.files.Put(sessionPath, kSmallSession);
  EXPECT_EQ(FetchWithAccount(std::string(4096, '\0')), L"session does not match account");
}

TEST_F(DamagedLocalFiles, NulsInsideAreBytesLikeAnyOther) {
  EXPECT_EQ(FetchWithSession(std::string("\0{\"email\":\"a\0b\"}", 16)),
            L"session does not match account");
  EXPECT_EQ(session.email, std::wstring(L"a\0b", 3));
  std::string account = kSmallAccount;
  account.replace(account.find("a@b"), 3, std::string("a\0b", 3));
  EXPECT_EQ(FetchWithAccount(account), L"");
}

TEST_F(DamagedLocalFiles, ThatAreNoUtf8MatchByWhatTheyAreReadAs) {
  std::string account = kSmallAccount;
  account.replace(account.find("a@b"), 3, "\xC3(");
  account.replace(account.find("\"h\""), 3, "\"\xED\xA0\x80\"");
  EXPECT_EQ(FetchWithAccount(account), L"session does not match account");
  EXPECT_EQ(FetchWithSession("{\"email\":\"\xFF(\"}"), L"");
  EXPECT_EQ(session.email, L"\xFFFD(");
  EXPECT_EQ(session.nodes.at(0).address, L"\xFFFD\xFFFD");
}

TEST_F(DamagedLocalFiles, SavedAsUtf16HoldNothing) {
  EXPECT_EQ(FetchWithSession(AsUtf16(kSmallSession)), L"session does not match account");
  EXPECT_EQ(session.email, L"");
  machine.files.Put(sessionPath, kSmallSession);
  EXPECT_EQ(FetchWithAccount(AsUtf16(kSmallAccount)), L"session does not match account");
  EXPECT_FALSE(Login(L"a@b", L"p"));
  EXPECT_EQ(error, L"email or password is incorrect");
  EXPECT_EQ(machine.files.Read(sessionPath), kSmallSession);
}

TEST_F(DamagedLocalFiles, EmptyAccountLetsTheEmptyUserInNoFurtherThanItsExpiry) {
  machine.files.Put(accountPath, "");
  EXPECT_FALSE(Login(L"", L""));
  EXPECT_EQ(error, L"account expired");
  EXPECT_EQ(machine.files.Read(sessionPath), kSmallSession);
}

TEST_F(DamagedLocalFiles, HugeFilesAreReadToTheirEnd) {
  EXPECT_EQ(FetchWithSession(std::string(kHuge, '\0')), L"session does not match account");
  EXPECT_EQ(FetchWithSession(std::string(kHuge, '"')), L"session does not match account");
  EXPECT_EQ(FetchWithSession(std::string(kHuge, ' ') + kSmallSession), L"");
  EXPECT_EQ(FetchWithAccount(std::string(kHuge, '{')), L"session does not match account");
  EXPECT_EQ(FetchWithAccount(std::string(kHuge, '\n') + kSmallAccount), L"");
}

TEST_F(DamagedLocalFiles, ValueThatNeverEndsIsTakenAsItStands) {
  const std::string endless(1024 * 1024, 'x');
  EXPECT_EQ(FetchWithSession("{\"email\":\"a@b" + endless), L"session does not match account");
  EXPECT_EQ(session.email, L"a@b" + std::wstring(1024 * 1024, L'x'));
}

}  // namespace
}  // namespace vpn
