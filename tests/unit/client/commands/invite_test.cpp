// Invitations, referrals and devices.
#include "tests/unit/client/panel_account_test.h"

namespace vpn {
namespace {

constexpr char kReferrals[] = "/api/v1/user/tvn_invite/referrals?page=1";
constexpr char kClaim[] = "https://device.example/claim";

class InviteTest : public unit::PanelAccountTest {
 protected:
  InviteTest() {
    Get("/api/v1/user/invite/fetch",
        {.body = R"({"data":{"codes":[{"code":"Xk3q9ZtB"}],"stat":[3,1250,70.5,10,480]}})"});
    Get("/api/v1/user/info", {.body = R"({"data":{"balance":1250}})"});
  }
  void ClaimGives(std::uint32_t status, const std::string& body) {
    machine.http.On("POST", kClaim, {.status = status, .body = body});
  }
  std::string Identity() const {
    return machine.files.Read(std::wstring(unit::kRuntime) + L"\\device.id").value_or("(none)");
  }
};

TEST_F(InviteTest, CodeLinkAndWhatTheyEarned) {
  EXPECT_EQ(Run({L"invite"}), 0);
  EXPECT_EQ(Out(),
            "Code         Xk3q9ZtB\n"
            "Link         https://panel.example/i/?c=Xk3q9ZtB\n"
            "Came by it   3\n"
            "Commission   ¥12.50, and ¥0.70 not confirmed yet, at 10 %\n"
            "Balance      ¥12.50\n");
}

TEST_F(InviteTest, AsJson) {
  EXPECT_EQ(Run({L"invite", L"--json"}), 0);
  EXPECT_EQ(Out(), R"({
  "schema": 1,
  "ok": true,
  "code": "Xk3q9ZtB",
  "link": "https://panel.example/i/?c=Xk3q9ZtB",
  "users": 3,
  "commissionCents": 1250,
  "pendingCents": 70,
  "ratePercent": 10,
  "balanceCents": 1250
}
)");
}

TEST_F(InviteTest, ReferralsAreATable) {
  Get(kReferrals,
      {.body =
           R"({"total":12,"data":[{"email_mask":"ab***@mail.example","created_at":1760000000,"paid":true,"commission":300},{"email_mask":"密***@mail.example","created_at":1760100000,"paid":false,"commission":0}]})"});
  EXPECT_EQ(Run({L"referrals"}), 0);
  EXPECT_EQ(Out(),
            "Who                  Since        Paid   Commission\n"
            "ab***@mail.example   2025-10-09   yes         ¥3.00\n"
            "密***@mail.example   2025-10-10   no          ¥0.00\n"
            "Page 1, 12 in all.\n");
}

TEST_F(InviteTest, APageOfReferralsAsJson) {
  Get("/api/v1/user/tvn_invite/referrals?page=2",
      {.body =
           R"({"total":11,"data":[{"email_mask":"z***@mail.example","created_at":1760000000,"paid":1,"commission":300}]})"});
  EXPECT_EQ(Run({L"referrals", L"--page", L"2", L"--json"}), 0);
  EXPECT_EQ(Out(), R"({
  "schema": 1,
  "ok": true,
  "total": 11,
  "referrals": [
    {
      "email": "z***@mail.example",
      "created": 1760000000,
      "paid": true,
      "commissionCents": 300
    }
  ]
}
)");
}

TEST_F(InviteTest, NobodyCameYet) {
  Get(kReferrals, {.body = R"({"total":0,"data":[]})"});
  EXPECT_EQ(Run({L"referrals"}), 0);
  EXPECT_EQ(Out(), "Page 1, 0 in all.\n");
}

TEST_F(InviteTest, ADeviceIsCountedUnderOneIdentityThatIsNeverShown) {
  ClaimGives(200, R"({"data":{"used":1,"limit":3}})");
  EXPECT_EQ(Run({L"device"}), 0);
  EXPECT_EQ(Run({L"device", L"--json"}), 0);
  EXPECT_EQ(Out(),
            "Devices in use: 1 of 3, this computer among them.\n"
            "{\n  \"schema\": 1,\n  \"ok\": true,\n  \"used\": 1,\n  \"limit\": 3\n}\n");
  const auto requests = machine.http.Requests();
  EXPECT_EQ(requests.at(0).body, R"({"device_id":")" + Identity() + "\"}");
  EXPECT_EQ(requests.at(1).body, requests.at(0).body);
}

TEST_F(InviteTest, TheLimitIsTheDeviceServicesOwnText) {
  ClaimGives(403, R"({"message":"设备数量已达上限（1 台）","used":1,"limit":1})");
  EXPECT_EQ(Run({L"device"}), 1);
  EXPECT_EQ(Err(),
            "设备数量已达上限（1 台）\n"
            "  What to do: this is the panel's own text: do as it says, or ask whoever runs the "
            "panel.\n");
}

TEST_F(InviteTest, AnIdentityThatCantBeKept) {
  machine.files.SetReadOnly(unit::kRuntime, true);
  EXPECT_EQ(Run({L"device"}), 1);
  EXPECT_EQ(Err(),
            "无法识别这台电脑\n"
            "  What to do: run this from an elevated console: this user may not write to "
            "C:\\Program Files\\Tavrin\\runtime.\n");
  EXPECT_TRUE(machine.http.Requests().empty());
}

TEST_F(InviteTest, WithoutADeviceServiceNothingIsCountedOrMade) {
  machine.files.Put(std::wstring(unit::kRuntime) + L"\\panel.json",
                    R"({"apiBase":"https://panel.example"})");
  EXPECT_EQ(Run({L"device"}), 0);
  EXPECT_EQ(Out(), "Devices are not counted here.\n");
  EXPECT_EQ(Identity(), "(none)");
}

}  // namespace
}  // namespace vpn
