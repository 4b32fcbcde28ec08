// The certificate authority of the test panel counts as trusted while this program runs: the
// platform reads its list of authorities once, at the first TLS connection of a process.
#include <gtest/gtest.h>

#include "tests/e2e/panel/harness/winhttp_counter.h"
#include "tests/e2e/panel/harness/panel.h"
#include "tests/e2e/panel/harness/trusted_authority.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  try {
    constexpr unsigned long kSlowOpening = 300;  // milliseconds, for calls that begin at once
    e2e::CountWinHttpHandles(kSlowOpening);
    const e2e::TrustedAuthority trusted(e2e::TestPanel().Authority());
    return RUN_ALL_TESTS();
  } catch (const std::exception& failure) {
    (void)std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
}
