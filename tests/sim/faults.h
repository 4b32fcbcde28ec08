// Makes the platform's calls fail, tells tests of them, and kills the calling process at one.
//
// Each call of a function that can fail counts, in the order in which the product makes them, from
// 1 on. A fault has no side effect: the call fails before it has done anything.
#ifndef TAVRIN_TESTS_SIM_FAULTS_H_
#define TAVRIN_TESTS_SIM_FAULTS_H_

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/sim/core.h"

namespace sim {

class Faults {
 public:
  explicit Faults(Core& core) : core_(core) {}

  // The n-th call of this function from now on fails, once or from then on. Without a code, the
  // one of the API table.
  struct Choice {
    std::uint64_t nth = 1;
    bool onwards = false;
    std::optional<std::uint32_t> code = std::nullopt;
  };
  void Fail(const std::string& name) { Fail(name, Choice{}); }
  void Fail(const std::string& name, Choice choice);
  void FailAlways(const std::string& name, std::optional<std::uint32_t> code = std::nullopt);

  // The k-th fallible call of all, counted from the last ResetCount, with its default code. Several
  // may be chosen.
  void FailAt(std::uint64_t k);
  void FailFrom(std::uint64_t k);
  // Ends what FailAt and FailFrom have chosen.
  void FailNoMore();
  // The process that makes the k-th call dies in front of it: see RunProcess.
  void KillAt(std::uint64_t k);
  // The process that makes the n-th call of this function from now on dies in front of it.
  void KillBefore(const std::string& name, std::uint64_t nth);

  // Runs `hook` on the calling thread, without the machine's lock, in front of the n-th call of
  // this function from now on, or of the k-th fallible call of all.
  void Before(const std::string& name, std::uint64_t nth, std::function<void()> hook);
  void BeforeEach(const std::string& name, std::function<void()> hook);
  void BeforeCall(std::uint64_t k, std::function<void()> hook);

  // Virtual milliseconds that each call of this function takes.
  void Delay(const std::string& name, std::uint64_t milliseconds);

  std::uint64_t FallibleCount() const;
  void ResetCount();
  // Drops every fault, hook and delay, and resets the count.
  void Clear();

  // For the gate.
  struct Verdict {
    std::optional<std::uint32_t> failure;
    bool kill = false;
    std::uint64_t delay = 0;
    std::vector<std::function<void()>> hooks;
  };
  Verdict Judge(const std::string& name);

 private:
  struct NamedFault {
    std::string name;
    std::uint64_t at;  // in the count of this name
    bool onwards;
    std::optional<std::uint32_t> code;
  };
  struct NamedHook {
    std::string name;
    std::uint64_t at;  // 0: each call
    std::function<void()> hook;
  };

  std::optional<std::uint32_t> FailureByName(const std::string& name, std::uint64_t ordinal) const;

  Core& core_;
  std::map<std::string, std::uint64_t> countByName_;
  std::uint64_t fallible_ = 0;
  std::vector<NamedFault> named_;
  std::vector<NamedHook> hooks_;
  std::map<std::uint64_t, std::vector<std::function<void()>>> hooksByCount_;
  std::map<std::string, std::uint64_t> delays_;
  std::set<std::uint64_t> failAt_;
  std::uint64_t failFrom_ = 0;
  std::uint64_t killAt_ = 0;
  std::map<std::string, std::uint64_t> killBefore_;  // in the count of each name
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_FAULTS_H_
