// The fixture of the tests that run the shipping executable against the test panel: an installation
// whose account is the panel's user, signed in.
#ifndef TAVRIN_TESTS_E2E_PANEL_SERVICE_PANEL_SERVICE_TEST_H_
#define TAVRIN_TESTS_E2E_PANEL_SERVICE_PANEL_SERVICE_TEST_H_

#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/panel/harness/panel.h"

namespace e2e {

class PanelServiceTest : public ServiceTest {
 protected:
  PanelServiceTest();

  // `panel.json` with these keys.
  void Configure(const Json& keys) const;
  void SignOut() const;
  // Starts the service with a panel that fails the fetch with which the service warms up, so that
  // the first connect does the fetching itself. The record of requests begins behind that.
  void StartCold(const Environment& environment = {});
  // A refusal that comes before the machine is touched.
  void ExpectRefused(const std::string& text);

  TestPanel panel;
};

// The two requests of a fetch that finds nodes in the subscription.
extern const Lines kFetchSequence;

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_PANEL_SERVICE_PANEL_SERVICE_TEST_H_
