// The fixture of the tests that drive the account operations: the product's own class on the real
// WinHTTP, a session file of its own, and the test panel.
#ifndef TAVRIN_TESTS_E2E_PANEL_ACCOUNT_ACCOUNT_TEST_H_
#define TAVRIN_TESTS_E2E_PANEL_ACCOUNT_ACCOUNT_TEST_H_

#include <gtest/gtest.h>

#include <string>

#include "src/account/xboard_control_plane.h"
#include "tests/e2e/panel/harness/panel.h"

namespace e2e {

class AccountTest : public ::testing::Test {
 protected:
  AccountTest();
  ~AccountTest() override;

  // A new object, as after a restart: what it knows is in the session file.
  vpn::XboardControlPlane Restart() const;
  // With the session file of the panel's user.
  vpn::XboardControlPlane SignedIn() const;
  // Empty when there is none.
  std::string SessionFile() const;

  TestPanel panel;
  std::wstring directory;
  std::wstring sessionPath;
  std::wstring apiBase;
  std::wstring deviceApi;
  std::wstring inviteBase;
  std::wstring error;
};

// The panel's user and password as the user types them.
inline constexpr wchar_t kTypedEmail[] = L"user@tavrin.example";
inline constexpr wchar_t kTypedPassword[] = L"p+ss &wörd 密";

// Wine's WinHTTP differs from that of Windows in some codes; the tests say where.
bool OnWine();

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_PANEL_ACCOUNT_ACCOUNT_TEST_H_
