#include "src/account/local_control_plane.h"

#include <string>
#include <utility>
#include <vector>

#include "tests/unit/account/local_plane_test.h"

namespace vpn {
namespace {

class LocalFetch : public LocalPlaneTest {};

TEST_F(LocalFetch, FetchAccountFillsTheSessionAndItsOneNode) {
  PutSession();
  EXPECT_TRUE(local.fetchAccount(session, error));
  EXPECT_EQ(error, L"earlier");
  EXPECT_TRUE(session.loggedIn);
  EXPECT_FALSE(session.expired);
  EXPECT_TRUE(session.hasPlan);
  EXPECT_EQ(session.deviceLimit, 3);
  EXPECT_EQ(session.deviceUsed, 1);
  EXPECT_EQ(session.email, L"user@example.com");
  EXPECT_EQ(session.planName, L"");
  EXPECT_EQ(session.planId, 0);
  EXPECT_EQ(session.expiryDate, L"2025-12-31");
  EXPECT_EQ(session.expiresAt, 0);
  EXPECT_EQ(session.transferEnable, 0);
  EXPECT_EQ(session.transferUsed, 0);
  ASSERT_EQ(session.nodes.size(), 1u);
  const NodeInfo& node = session.nodes[0];
  EXPECT_EQ(node.name, L"东京 1");
  EXPECT_EQ(node.address, L"node.example");
  EXPECT_EQ(node.port, 8443);
  EXPECT_EQ(node.uuid, L"0b0b0b0b-1111-2222-3333-444444444444");
  EXPECT_EQ(node.flow, L"xtls-rprx-other");
  EXPECT_EQ(node.sni, L"www.example.org");
  EXPECT_EQ(node.fingerprint, L"firefox");
  EXPECT_EQ(node.publicKey, L"KEY");
  EXPECT_EQ(node.shortId, L"0a1b");
}

TEST_F(LocalFetch, FetchAccountReadsTheSessionAndThenTheAccount) {
  PutSession();
  EXPECT_TRUE(local.fetchAccount(session, error));
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"),
            (Texts{R"("C:\run\session.json", "rb", 64)", R"("C:\run\account.json", "rb", 64)"}));
}

TEST_F(LocalFetch, FlowAndFingerprintKeepTheirDefaultsWhenTheFileGivesNone) {
  PutSession();
  for (const char* prefix : {"", "empty"}) {
    SCOPED_TRACE(prefix);
    const bool present = *prefix != '\0';
    PutAccount({{"flow", present ? R"("flow": "")" : ""},
                {"fingerprint", present ? R"("fingerprint": "")" : ""}});
    EXPECT_TRUE(local.fetchAccount(session, error));
    EXPECT_EQ(session.nodes.at(0).flow, L"xtls-rprx-vision");
    EXPECT_EQ(session.nodes.at(0).fingerprint, L"chrome");
  }
}

TEST_F(LocalFetch, OptionalNodeFieldsMayBeMissing) {
  PutSession();
  PutAccount({{"nodeName", ""}, {"sni", ""}, {"publicKey", ""}, {"shortId", ""}});
  EXPECT_TRUE(local.fetchAccount(session, error));
  const NodeInfo& node = session.nodes.at(0);
  EXPECT_EQ(node.name + node.sni + node.publicKey + node.shortId, L"");
}

TEST_F(LocalFetch, TheDeviceLimitIsOneByDefaultAndZeroForAText) {
  PutSession();
  const std::vector<std::pair<std::string, int>> table = {{"", 1},
                                                          {R"("deviceLimit": "5")", 0},
                                                          {R"("deviceLimit": 5)", 5},
                                                          {"\"deviceLimit\":\n5", 5},
                                                          {R"("deviceLimit": -1)", -1}};
  for (const auto& [line, expected] : table) {
    SCOPED_TRACE(line);
    PutAccount({{"deviceLimit", line}});
    EXPECT_TRUE(local.fetchAccount(session, error));
    EXPECT_EQ(session.deviceLimit, expected);
    EXPECT_EQ(session.deviceUsed, 1);
  }
}

TEST_F(LocalFetch, ThePortMayStandOnTheNextLine) {
  PutSession();
  PutAccount({{"port", "\"port\":\n    443"}});
  EXPECT_TRUE(local.fetchAccount(session, error));
  EXPECT_EQ(session.nodes.at(0).port, 443);
}

TEST_F(LocalFetch, WithoutASessionFileNobodyIsLoggedIn) {
  session.email = L"left over";
  session.nodes.resize(2);
  session.deviceUsed = 9;
  EXPECT_FALSE(local.fetchAccount(session, error));
  EXPECT_EQ(error, L"not logged in");
  EXPECT_EQ(session.email, L"");
  EXPECT_EQ(session.deviceUsed, 0);
  EXPECT_TRUE(session.nodes.empty());
  EXPECT_EQ(machine.calls.Count("_wfsopen"), 1u) << "the account is not even opened";
}

TEST_F(LocalFetch, WithoutAnAccountFileFetchAccountNamesItsPath) {
  PutSession();
  machine.files.Remove(accountPath);
  session.email = L"left over";
  EXPECT_FALSE(local.fetchAccount(session, error));
  EXPECT_EQ(error, L"cannot read C:\\run\\account.json");
  EXPECT_EQ(session.email, L"");
}

TEST_F(LocalFetch, ASessionOfAnotherEmailDoesNotMatch) {
  for (const char* line : {"{\"email\":\"other@example.com\"}\n",
                           "{\"email\":\"User@example.com\"}\n", "{}", "", "not json"}) {
    SCOPED_TRACE(line);
    PutSession(line);
    session.nodes.resize(2);
    EXPECT_FALSE(local.fetchAccount(session, error));
    EXPECT_EQ(error, L"session does not match account");
    EXPECT_FALSE(session.loggedIn);
    EXPECT_TRUE(session.nodes.empty());
  }
}

TEST_F(LocalFetch, AMismatchLeavesWhatTheStepsBeforeHadFilledIn) {
  PutSession("{\"email\":\"other@example.com\"}\n");
  EXPECT_FALSE(local.fetchAccount(session, error));
  EXPECT_EQ(session.email, L"other@example.com");
  EXPECT_EQ(session.expiryDate, L"2025-12-31");
  EXPECT_FALSE(session.expired);
  EXPECT_TRUE(session.hasPlan);
  EXPECT_EQ(session.deviceLimit, 3);
  EXPECT_EQ(session.deviceUsed, 1);
}

TEST_F(LocalFetch, AnEmptySessionEmailDoesNotMatchAnEmptyAccountEmail) {
  PutAccount({{"email", R"("email": "")"}});
  PutSession("{\"email\":\"\",\"expireAt\":\"2025-12-31\"}\n");
  EXPECT_FALSE(local.fetchAccount(session, error));
  EXPECT_EQ(error, L"session does not match account");
  EXPECT_FALSE(session.loggedIn);
}

TEST_F(LocalFetch, AMismatchIsToldBeforeTheExpiry) {
  PutAccount({{"expireAt", R"("expireAt": "2000-01-01")"}});
  PutSession("{\"email\":\"other@example.com\"}\n");
  EXPECT_FALSE(local.fetchAccount(session, error));
  EXPECT_EQ(error, L"session does not match account");
  EXPECT_TRUE(session.expired);
  EXPECT_FALSE(session.hasPlan);
}

TEST_F(LocalFetch, AnExpiredAccountHasNoNodesAndNoPlan) {
  PutAccount({{"expireAt", R"("expireAt": "2025-06-14")"}});
  PutSession();
  session.nodes.resize(2);
  EXPECT_FALSE(local.fetchAccount(session, error));
  EXPECT_EQ(error, L"account expired");
  EXPECT_TRUE(session.loggedIn);
  EXPECT_TRUE(session.expired);
  EXPECT_FALSE(session.hasPlan);
  EXPECT_EQ(session.expiryDate, L"2025-06-14");
  EXPECT_TRUE(session.nodes.empty());
}

TEST_F(LocalFetch, TheExpiryOfTheSessionFileIsNeverRead) {
  PutSession("{\"email\":\"user@example.com\",\"expireAt\":\"2000-01-01\"}\n");
  EXPECT_TRUE(local.fetchAccount(session, error));
  EXPECT_EQ(session.expiryDate, L"2025-12-31");
  PutAccount({{"expireAt", R"("expireAt": "2000-01-01")"}});
  PutSession("{\"email\":\"user@example.com\",\"expireAt\":\"2099-01-01\"}\n");
  EXPECT_FALSE(local.fetchAccount(session, error));
  EXPECT_EQ(error, L"account expired");
}

TEST_F(LocalFetch, TheAccountIsGoodThroughItsLastDayAndExpiredOnTheNext) {
  PutAccount({{"expireAt", R"("expireAt": "2025-06-15")"}});
  machine.clock.SetDate(2025, 6, 15, 23, 59, 59);
  EXPECT_TRUE(Login());
  EXPECT_TRUE(local.fetchAccount(session, error));
  EXPECT_EQ(session.nodes.size(), 1u);
  machine.clock.Advance(1000);
  EXPECT_FALSE(Login());
  EXPECT_EQ(error, L"account expired");
  error.clear();
  EXPECT_FALSE(local.fetchAccount(session, error));
  EXPECT_EQ(error, L"account expired");
}

TEST_F(LocalFetch, ANodeWithoutAddressUuidOrPortIsRefusedAndStaysInTheList) {
  PutSession();
  const std::vector<std::pair<std::string, std::string>> table = {
      {"address", ""},
      {"address", R"("address": "")"},
      {"uuid", ""},
      {"uuid", R"("uuid": "")"},
      {"port", ""},
      {"port", R"("port": 0)"},
      {"port", R"("port": "443")"},
  };
  for (const auto& [key, line] : table) {
    SCOPED_TRACE(key + " " + line);
    PutAccount({{key, line}});
    error = L"earlier";
    EXPECT_FALSE(local.fetchAccount(session, error));
    EXPECT_EQ(error, L"account.json is missing node fields");
    EXPECT_TRUE(session.loggedIn);
    ASSERT_EQ(session.nodes.size(), 1u);
    EXPECT_EQ(session.nodes[0].sni, L"www.example.org");
  }
}

TEST_F(LocalFetch, APortBelowZeroIsSetAndThereforeAccepted) {
  PutSession();
  PutAccount({{"port", R"("port": -1)"}});
  EXPECT_TRUE(local.fetchAccount(session, error));
  EXPECT_EQ(session.nodes.at(0).port, -1);
}

TEST_F(LocalFetch, FilesThatStartWithTheByte0xEFLoseThreeBytes) {
  PutSession();
  machine.files.Put(sessionPath, "\xEFxy" + *machine.files.Read(sessionPath));
  machine.files.Put(accountPath, "\xEF\"e" + *machine.files.Read(accountPath));
  EXPECT_TRUE(local.fetchAccount(session, error));
}

TEST_F(LocalFetch, AChangeToTheAccountTakesEffectWithTheNextFetch) {
  PutSession();
  EXPECT_TRUE(local.fetchAccount(session, error));
  PutAccount({{"address", R"("address": "198.51.100.7")"}});
  EXPECT_TRUE(local.fetchAccount(session, error));
  EXPECT_EQ(session.nodes.at(0).address, L"198.51.100.7");
  PutAccount({{"email", R"("email": "new@example.com")"}});
  EXPECT_FALSE(local.fetchAccount(session, error));
  EXPECT_EQ(error, L"session does not match account");
}

// Whatever the files hold: success means signed in with exactly one node.
TEST_F(LocalFetch, ATrueResultMeansLoggedInWithExactlyOneNode) {
  int good = 0;
  for (const char* sessionLine : {kSession, "{}", "{\"email\":\"other@example.com\"}\n"}) {
    for (const char* expiry : {R"("expireAt": "2025-12-31")", R"("expireAt": "2000-1-1")", ""}) {
      for (const char* port : {R"("port": 1)", R"("port": 0)"}) {
        PutSession(sessionLine);
        PutAccount({{"expireAt", expiry}, {"port", port}});
        if (local.fetchAccount(session, error)) {
          ++good;
          EXPECT_TRUE(session.loggedIn);
          EXPECT_EQ(session.nodes.size(), 1u);
        }
      }
    }
  }
  EXPECT_EQ(good, 1) << "of 18 combinations";
}

TEST_F(LocalFetch, LoginFetchAndLogoutWorkTogether) {
  EXPECT_TRUE(Login());
  EXPECT_TRUE(local.fetchAccount(session, error));
  EXPECT_TRUE(local.logout());
  EXPECT_FALSE(local.fetchAccount(session, error));
  EXPECT_EQ(error, L"not logged in");
}

}  // namespace
}  // namespace vpn
