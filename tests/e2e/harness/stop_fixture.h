// Runs the service in the mode that a way to stop it belongs to, stops it that way, and looks at
// what is left.
#ifndef TAVRIN_TESTS_E2E_HARNESS_STOP_FIXTURE_H_
#define TAVRIN_TESTS_E2E_HARNESS_STOP_FIXTURE_H_

#include <memory>
#include <string>

#include "tests/e2e/harness/installed_service_test.h"
#include "tests/e2e/harness/owner.h"

namespace e2e {

enum class Trigger { kShutdown, kDaemonShutdown, kCtrlC, kFallbackCtrlC, kOwnerEnds, kManagerStop };

// As a part of a test's name.
std::string TriggerName(Trigger trigger);

class StopFixture : public InstalledServiceTest {
 protected:
  ~StopFixture() override;

  void Begin(Trigger trigger);
  // Returns when the service has taken notice, where that shows from outside.
  void Pull();
  // The process has ended with code 0 and the trigger's own last line, its children with it, and
  // the machine is as it was in the beginning.
  void ExpectEnded();
  bool IsUp() const;

 private:
  void ExpectNobodyLeft() const;

  Trigger trigger_ = Trigger::kShutdown;
  std::unique_ptr<Owner> owner_;
  HANDLE process_ = nullptr;
};

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_STOP_FIXTURE_H_
