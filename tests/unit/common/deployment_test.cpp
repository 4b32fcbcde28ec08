// The header-only rest of the room: what a deployment chooses, the port, the mutex.
#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "src/common/deployment.h"
#include "src/common/mutex.h"
#include "src/common/text.h"

namespace vpn {
namespace {

TEST(Deployment, DefaultNodeAddressIsAnIpv4Literal) {
  EXPECT_STREQ(kDefaultNodeAddress, L"203.0.113.10");
  EXPECT_TRUE(IsIpv4Literal(kDefaultNodeAddress));
}

TEST(Deployment, TheseSevenDomainsStayOnTheProxyInThisOrder) {
  EXPECT_EQ(std::vector<std::string>(std::begin(kProxyDomains), std::end(kProxyDomains)),
            (std::vector<std::string>{"google.com", "anthropic.com", "claude.ai", "claude.com",
                                      "cursor.com", "cursor.sh", "cursorapi.com"}));
}

TEST(Deployment, PanelDomainAndNotificationAddressAreForDocumentation) {
  EXPECT_STREQ(kPanelDomain, "panel.example");
  EXPECT_STREQ(kPaymentNotifyUrl, L"https://api.panel.example");
}

TEST(Deployment, TheVersionIsThatOfTheProject) {
  EXPECT_STREQ(kProductVersion, L"0.1.0");
}

TEST(SocksPort, Is17593) {
  EXPECT_EQ(kSocksPort, 17593);
}

TEST(MutexLock, KeepsOthersOutForTheLengthOfItsScope) {
  Mutex mutex;
  int value = 0;
  const auto count = [&] {
    for (int i = 0; i < 20000; ++i) {
      const MutexLock lock(mutex);
      ++value;
    }
  };
  std::thread first(count);
  std::thread second(count);
  first.join();
  second.join();
  EXPECT_EQ(value, 40000);
}

}  // namespace
}  // namespace vpn
