#include "tests/sim/script.h"

#include "tests/sim/path.h"
#include "tests/sim/pipes.h"
#include "tests/sim/processes.h"
#include "tests/sim/text.h"

namespace sim {

AdapterPlan TavrinAdapter() {
  AdapterPlan plan;
  plan.adapter.friendlyName = "tavrin";
  plan.adapter.description = "tun2socks Tunnel";
  plan.adapter.ifType = 53;
  plan.adapter.mtu = 65535;
  plan.firstName = "本地连接* 3";
  return plan;
}

Script& Script::Exits(std::uint32_t code, std::uint64_t after) {
  exit = Exit{code, after};
  return *this;
}

Script& Script::Listens(std::uint16_t port, std::uint64_t after) {
  listens.push_back({port, after});
  return *this;
}

Script& Script::ActsAsNetsh(std::uint64_t after, std::optional<std::uint32_t> code) {
  netsh = Netsh{after, code};
  return *this;
}

Script& Script::Does(std::uint64_t after, std::function<void(Process&)> action) {
  steps.push_back({after, std::move(action)});
  return *this;
}

Script& Script::Prints(std::string text, std::uint64_t after) {
  return Does(after, [text = std::move(text)](Process& process) {
    if (process.output) {
      process.output->bytes += text;
    }
  });
}

Script TypicalXray() {
  return Script().Listens(17593, 500);
}
Script TypicalTun2socks() {
  return Script().BringsAdapter(TavrinAdapter());
}
Script TypicalNetsh() {
  return Script().ActsAsNetsh(60);
}

Programs::Rule& Programs::RuleFor(const std::wstring& pattern) {
  for (Rule& rule : rules_) {
    if (rule.pattern == pattern) {
      return rule;
    }
  }
  rules_.push_back({pattern, {}, std::nullopt});
  return rules_.back();
}

void Programs::On(const std::wstring& pattern, Script script) {
  const MachineLock lock = core_.Lock();
  RuleFor(pattern).standing = std::move(script);
}

void Programs::OnNext(const std::wstring& pattern, Script script) {
  const MachineLock lock = core_.Lock();
  RuleFor(pattern).once.push_back(std::move(script));
}

Script Programs::Take(const std::wstring& imagePath) {
  const MachineLock lock = core_.Lock();
  const std::wstring name = BaseName(imagePath);
  for (Rule& rule : rules_) {
    if (!MatchesWildcards(rule.pattern, name) && !MatchesWildcards(rule.pattern, imagePath)) {
      continue;
    }
    if (!rule.once.empty()) {
      Script script = std::move(rule.once.front());
      rule.once.erase(rule.once.begin());
      return script;
    }
    if (rule.standing) {
      return *rule.standing;
    }
  }
  return Idle();
}

}  // namespace sim
