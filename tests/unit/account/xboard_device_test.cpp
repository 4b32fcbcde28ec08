// The registration of this computer on the device service.
#include <string>

#include "tests/unit/account/xboard_test.h"

namespace vpn {
namespace {

class Device : public XboardTest {
 protected:
  bool Claim(const wchar_t* deviceId = L"pc-1") {
    return panel().claimDevice(deviceId, used, limit, error);
  }
  void Answer(sim::HttpAnswer answer) {
    machine.http.OnNext("POST", "https://device.example/claim", std::move(answer));
  }
  void ExpectCounts(std::int32_t expectedUsed, std::int32_t expectedLimit) {
    EXPECT_EQ(used, expectedUsed);
    EXPECT_EQ(limit, expectedLimit);
  }
  void ExpectFailure(const wchar_t* text) {
    EXPECT_FALSE(Claim());
    EXPECT_EQ(error, text);
    ExpectCounts(0, 0);
  }

  std::int32_t used = 7;
  std::int32_t limit = 9;
};

TEST_F(Device, IsClaimedWithTheCredential) {
  Answer(Ok(R"({"data":{"used":2,"limit":3}})"));
  error = L"earlier";
  EXPECT_TRUE(Claim(L"中\"pc\\1"));
  ExpectCounts(2, 3);
  EXPECT_EQ(error, L"earlier");
  EXPECT_EQ(Sent(), Texts{"POST https://device.example/claim\r\nAccept: application/json\r\n"
                          "User-Agent: Tavrin/0.1\r\nContent-Type: application/json\r\n"
                          "Authorization: Bearer abc\r\nauth_data: Bearer abc\r\n\r\n"
                          "{\"device_id\":\"中\\\"pc\\\\1\"}"});
}

TEST_F(Device, EachCountMayStandInTheDataOrAtTheTopLevel) {
  const std::string both = R"({"used":5,"limit":6})";
  Answer(Ok(both));
  EXPECT_TRUE(Claim());
  ExpectCounts(5, 6);
  Answer(Ok(R"({"data":{"used":1},"limit":3})"));
  EXPECT_TRUE(Claim());
  ExpectCounts(1, 3);
  Answer(Ok(R"({"used":5,"limit":6,"data":{"used":1,"limit":2}})"));
  EXPECT_TRUE(Claim());
  ExpectCounts(1, 2);
}

TEST_F(Device, AnAnswerWithNeitherIsASuccessWithZeroes) {
  for (const char* body : {"{}", "", "<html></html>", R"({"data":null})"}) {
    Answer(Ok(body));
    EXPECT_TRUE(Claim());
    ExpectCounts(0, 0);
  }
}

TEST_F(Device, MoreThanTheLimitIsNotJudged) {
  Answer(Ok(R"({"used":4,"limit":3})"));
  EXPECT_TRUE(Claim());
  ExpectCounts(4, 3);
}

TEST_F(Device, CountsBeyond32BitsAreConvertedPlainly) {
  Answer(Ok(R"({"used":4294967297,"limit":-1})"));
  EXPECT_TRUE(Claim());
  ExpectCounts(1, -1);
}

TEST_F(Device, WithoutADeviceServiceEverythingIsAllowed) {
  owner = std::make_unique<XboardControlPlane>(L"https://panel.example", L"C:\\run\\none.json", L"",
                                               L"");
  EXPECT_TRUE(Claim(L""));
  ExpectCounts(0, 0);
  EXPECT_EQ(error, L"");
  EXPECT_EQ(machine.http.Lines(), Texts());
}

TEST_F(Device, SignedOutNothingIsAskedEvenForABadId) {
  SignOut();
  EXPECT_FALSE(Claim(L""));
  EXPECT_EQ(error, L"请先登录");
  ExpectCounts(0, 0);
  EXPECT_EQ(machine.http.Lines(), Texts());
}

TEST_F(Device, AnIdThatIsMissingOrUnknownIsNotSent) {
  for (const wchar_t* id : {L"", L"unknown-device"}) {
    used = limit = 5;
    error.clear();
    EXPECT_FALSE(Claim(id));
    EXPECT_EQ(error, L"无法识别这台电脑");
    ExpectCounts(0, 0);
  }
  EXPECT_EQ(machine.http.Lines(), Texts());
}

TEST_F(Device, IdsThatOnlyResembleTheUnknownOneAreSent) {
  for (const wchar_t* id : {L"Unknown-Device", L"unknown-device ", L"unknown-devic"}) {
    Answer(Ok("{}"));
    EXPECT_TRUE(Claim(id));
  }
  EXPECT_EQ(machine.http.Lines().size(), 3u);
}

TEST_F(Device, ARefusalShowsTheServicesMessageWithoutADetail) {
  Answer(Refusal(409, R"({"message":"\u8bbe\u5907\u6570\u5df2\u6ee1","used":3,"limit":3})"));
  ExpectFailure(L"设备数已满");
}

TEST_F(Device, WithoutAMessageTheTransportsTextIsShown) {
  Answer(Refusal(500));
  ExpectFailure(L"面板 HTTP 500");
  Answer(Unreachable(12007));
  ExpectFailure(L"无法解析面板域名。请检查网络或 DNS。");
}

}  // namespace
}  // namespace vpn
