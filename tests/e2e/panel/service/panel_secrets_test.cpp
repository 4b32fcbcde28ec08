// Where the user's credential and the subscription's token turn up: in the requests they belong to.
#include <filesystem>

#include "tests/e2e/panel/service/panel_service_test.h"

namespace e2e {
namespace {

constexpr char kSecret[] = "7QzKcXw1mUe5RtYh8JpLs2Vb9NdFg3Aa6Co4Ei0Uk7Wx5Zq8";

class PanelSecrets : public PanelServiceTest {
 protected:
  // Files of the sandbox that hold the text, by name.
  Lines FilesWith(const std::string& text) const {
    Lines found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(box.root())) {
      const std::wstring path = entry.path().wstring();
      if (entry.is_regular_file() && ReadText(path).find(text) != std::string::npos) {
        found.push_back(entry.path().filename().string());
      }
    }
    return found;
  }
};

// The files include the service's log, what it printed, the trace, the generated configuration, and
// the log of platform calls with every child's command line.
TEST_F(PanelSecrets, StayInTheSessionFile) {
  StartCold();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  panel.Answer("/api/v1/user/getSubscribe", 403,
               std::string(R"({"message":")") + kCredential + "\"}");
  EXPECT_EQ(Ask(R"({"op":"connect","node":"大阪 04"})"), Refusal("面板 HTTP 403", true));
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ShutDown();
  ASSERT_TRUE(Exists(box.serviceLog()));
  ASSERT_TRUE(Exists(box.trace()));
  ExpectLines(FilesWith(kSecret), {"session.json"});
  ExpectLines(FilesWith(kToken), {});
  ExpectLines(FilesWith(kEmail), {"session.json"});
}

TEST_F(PanelSecrets, GoToThePanelUnderTwoNamesAndTheTokenInOneAddress) {
  StartCold();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const auto requests = panel.Requests();
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_EQ(requests[0].target.find(kToken), std::string::npos);
  int headersWithSecret = 0;
  for (const ReceivedRequest& request : requests) {
    EXPECT_EQ(request.target.find(kSecret), std::string::npos);
    for (const std::string& line : request.headers) {
      if (line.find(kSecret) != std::string::npos) ++headersWithSecret;
    }
  }
  EXPECT_EQ(headersWithSecret, 2);
}

}  // namespace
}  // namespace e2e
