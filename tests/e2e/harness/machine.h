// What a test sees of the simulated machine: its state, to read and to edit while the service runs,
// and the log of platform calls and child command lines.
#ifndef TAVRIN_TESTS_E2E_HARNESS_MACHINE_H_
#define TAVRIN_TESTS_E2E_HARNESS_MACHINE_H_

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/standins/machine_state.h"

namespace e2e {

class Machine {
 public:
  // `root` is cut out of the log and shown as "<box>".
  Machine(std::wstring directory, std::wstring root)
      : directory_(std::move(directory)), root_(std::move(root)) {}

  standins::MachineState State() const;
  netmodel::Network Network() const { return State().network; }
  void Edit(const std::function<void(standins::MachineState&)>& change) const;

  // The log with the sandbox as "<box>" and process ids as "[pid]".
  std::vector<std::string> Calls() const;
  // The same with the polls for the tunnel's adapter shown once, behind the start of tun2socks:
  // how many there are, and whether the first comes before that child has said a word, is chance.
  std::vector<std::string> CallsWithOnePoll() const;
  // The calls from here on.
  void ForgetCalls() const;

  // How often the child has been started, by image name.
  std::size_t Starts(const std::string& image) const;
  // A handle on the last child of this image, which the caller closes; null when it is gone.
  HANDLE OpenLast(const std::string& image, DWORD furtherAccess = 0) const;

 private:
  std::wstring directory_;
  std::wstring root_;
};

// The route as a row to compare with: destination/prefix via next hop metric m on alias.
std::vector<std::string> RouteTexts(const netmodel::Network& network);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_MACHINE_H_
