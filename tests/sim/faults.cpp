#include "tests/sim/faults.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "tests/sim/api_table.h"

namespace sim {

void Faults::Fail(const std::string& name, Choice choice) {
  if (FindApi(name).style == FailureStyle::kNone) {
    std::fprintf(stderr, "sim: %s can't fail\n", name.c_str());
    std::abort();
  }
  const MachineLock lock = core_.Lock();
  named_.push_back({name, countByName_[name] + choice.nth, choice.onwards, choice.code});
}

void Faults::FailAlways(const std::string& name, std::optional<std::uint32_t> code) {
  Fail(name, {.onwards = true, .code = code});
}

void Faults::FailAt(std::uint64_t k) {
  const MachineLock lock = core_.Lock();
  failAt_.insert(k);
}

void Faults::FailFrom(std::uint64_t k) {
  const MachineLock lock = core_.Lock();
  failFrom_ = k;
}

void Faults::FailNoMore() {
  const MachineLock lock = core_.Lock();
  failAt_.clear();
  failFrom_ = 0;
}

void Faults::KillAt(std::uint64_t k) {
  const MachineLock lock = core_.Lock();
  killAt_ = k;
}

void Faults::KillBefore(const std::string& name, std::uint64_t nth) {
  (void)FindApi(name);
  const MachineLock lock = core_.Lock();
  killBefore_[name] = countByName_[name] + nth;
}

void Faults::Before(const std::string& name, std::uint64_t nth, std::function<void()> hook) {
  (void)FindApi(name);
  const MachineLock lock = core_.Lock();
  hooks_.push_back({name, countByName_[name] + nth, std::move(hook)});
}

void Faults::BeforeEach(const std::string& name, std::function<void()> hook) {
  (void)FindApi(name);
  const MachineLock lock = core_.Lock();
  hooks_.push_back({name, 0, std::move(hook)});
}

void Faults::BeforeCall(std::uint64_t k, std::function<void()> hook) {
  const MachineLock lock = core_.Lock();
  hooksByCount_[k].push_back(std::move(hook));
}

void Faults::Delay(const std::string& name, std::uint64_t milliseconds) {
  (void)FindApi(name);
  const MachineLock lock = core_.Lock();
  delays_[name] = milliseconds;
}

std::uint64_t Faults::FallibleCount() const {
  const MachineLock lock = core_.Lock();
  return fallible_;
}

void Faults::ResetCount() {
  const MachineLock lock = core_.Lock();
  fallible_ = 0;
}

void Faults::Clear() {
  const MachineLock lock = core_.Lock();
  fallible_ = failFrom_ = killAt_ = 0;
  failAt_.clear();
  named_.clear();
  hooks_.clear();
  hooksByCount_.clear();
  delays_.clear();
  killBefore_.clear();
}

std::optional<std::uint32_t> Faults::FailureByName(const std::string& name,
                                                   std::uint64_t ordinal) const {
  for (const NamedFault& fault : named_) {
    const bool hit = fault.onwards ? ordinal >= fault.at : ordinal == fault.at;
    if (fault.name == name && hit) {
      return fault.code.value_or(FindApi(name).defaultCode);
    }
  }
  return std::nullopt;
}

Faults::Verdict Faults::Judge(const std::string& name) {
  const MachineLock lock = core_.Lock();
  const ApiEntry& api = FindApi(name);
  const std::uint64_t ordinal = ++countByName_[name];
  Verdict verdict;
  for (const NamedHook& hook : hooks_) {
    if (hook.name == name && (hook.at == 0 || hook.at == ordinal)) {
      verdict.hooks.push_back(hook.hook);
    }
  }
  if (const auto delay = delays_.find(name); delay != delays_.end()) {
    verdict.delay = delay->second;
  }
  verdict.failure = FailureByName(name, ordinal);
  const auto killed = killBefore_.find(name);
  verdict.kill = killed != killBefore_.end() && killed->second == ordinal;
  if (!api.counted) {
    return verdict;
  }
  const std::uint64_t k = ++fallible_;
  if (const auto found = hooksByCount_.find(k); found != hooksByCount_.end()) {
    verdict.hooks.insert(verdict.hooks.end(), found->second.begin(), found->second.end());
  }
  verdict.kill = verdict.kill || k == killAt_;
  if (!verdict.failure && (failAt_.contains(k) || (failFrom_ != 0 && k >= failFrom_))) {
    verdict.failure = api.defaultCode;
  }
  return verdict;
}

}  // namespace sim
