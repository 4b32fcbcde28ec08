// A process that does nothing, in the place of the user interface that owns a daemon.
#ifndef TAVRIN_TESTS_E2E_HARNESS_OWNER_H_
#define TAVRIN_TESTS_E2E_HARNESS_OWNER_H_

#include <windows.h>

#include "tests/e2e/harness/machine.h"
#include "tests/e2e/harness/sandbox.h"

namespace e2e {

// Lives until it is ended, or until the object goes.
class Owner {
 public:
  Owner(const Sandbox& box, const Machine& machine);
  ~Owner();
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;

  DWORD pid() const { return pid_; }
  // Returns when it is gone.
  void End();
  // Lets go of it: with its last handle, an ended process's number is free again.
  void Forget();

 private:
  HANDLE process_ = nullptr;
  DWORD pid_ = 0;
};

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_OWNER_H_
