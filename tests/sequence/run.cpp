#include "tests/sequence/run.h"

#include <algorithm>

#include "tests/fault/network_lines.h"
#include "tests/sequence/model.h"
#include "tests/sequence/observation.h"
#include "tests/sequence/pattern.h"
#include "tests/sequence/world.h"

namespace sequence {
namespace {

constexpr std::uint64_t kSettling = 500;     // what is on its way arrives
constexpr std::uint64_t kLongest = 150'000;  // an event takes no longer
constexpr std::uint64_t kLifetime = 90'000;  // of a fetched account

bool IsOpen(const Event& event) {
  return event.name == "mid" || event.name == "fail" || event.name == "burst";
}

// What the service may have changed, whatever failed: routes to the hosts that it pins, everything
// of its own adapter, and the IPv6 settings and name servers of the physical interface.
Lines ForeignLines(const netmodel::Network& network) {
  static const Pattern ours(
      "(route (以太网|以太网 2|WLAN) "
      "(203\\.0\\.113\\.(10|7[0-7])|198\\.51\\.100\\.(7|9|1[2-4]))/32 via "
      "192\\.168\\.[12]\\.(1|254) .*)|"
      "((route|ipv6 route) tavrin( 9)? .*)|(adapter tavrin( 9)?: .*)|(ipv6 of tavrin( 9)?: .*)|"
      "(adapter (以太网|以太网 2|WLAN): .*)|(ipv6 of (以太网|以太网 2|WLAN): .*)|"
      "(ipv6 route (以太网|以太网 2) ::/0)");
  Lines lines = fault::LinesOf(network);
  std::erase_if(lines, [](const std::string& line) { return ours.Matches(line); });
  return lines;
}

bool IsWellFormedReply(const std::string& reply) {
  static const Pattern form(
      R"re(\{"ok":(true,"running":(true|false),"error":""|false,"running":(true|false),"error":"[^"]+")\})re");
  return form.Matches(reply);
}

bool IsKnownLogLine(const std::string& line) {
  static const Pattern forms(
      "ipc op=.*|ipc error=.+|ipc read failed err=[0-9]+|ipc write reply failed err=[0-9]+|"
      "daemon stopped|stopped\\.|service stopped|ui process exited; stopping helper");
  return forms.Matches(line);
}

class Run {
 public:
  explicit Run(Table& table)
      : table_(table), model_(world_.before()), observer_(world_.machine()) {}

  Outcome Do(const Events& events) {
    Outcome outcome;
    for (const Event& event : events) {
      ++outcome.at;
      table_.Add(model_.State(), event.name);
      outcome.differences = Step(event);
      if (outcome.failed()) {
        return outcome;
      }
    }
    outcome.at = 0;
    return outcome;
  }

 private:
  std::uint64_t Now() { return world_.machine().clock.Now(); }

  Lines Step(const Event& event) {
    if (event.name == "clock") {
      LetTimePass(event.value);
      model_.End(Now());
      return Differences(model_, world_.machine());
    }
    const bool connects = event.name == "connect" || event.value == "connect";
    // Of these the model says nothing beforehand.
    if (IsOpen(event) || (connects && model_.IsCrowded())) {
      return OpenStep(event);
    }
    observer_.Begin();
    if (!model_.machine().IsCertain(Now(), kLongest)) {
      world_.machine().clock.Advance(10 * kLongest);
      model_.End(Now());
    }
    const Expected expected = model_.Apply(event, Now());
    const std::string reply = world_.Carry(event);
    Lines found;
    if (!world_.ComeToRest()) {
      found.push_back("the service neither ended nor waits for a client");
      return found;
    }
    world_.machine().clock.Advance(kSettling);
    model_.End(Now());
    found = Differences(expected, observer_.Look(reply));
    for (const std::string& line : Differences(model_, world_.machine())) {
      found.push_back(line);
    }
    for (const std::string& path : world_.ChangedFiles()) {
      found.push_back("changed: " + path);
    }
    return found;
  }

  // Until so long before the next wrap of the 32-bit tick.
  std::uint64_t TimeUntilWrap(std::uint64_t left) {
    constexpr std::uint64_t kWrap = 0x1'0000'0000;
    return (kWrap - left + kWrap - Now() % kWrap) % kWrap;
  }

  void LetTimePass(const std::string& value) {
    sim::Clock& clock = world_.machine().clock;
    const std::uint64_t age = model_.CacheAge(Now());
    const std::uint64_t wanted = value == "under"   ? kLifetime - 1
                                 : value == "exact" ? kLifetime
                                 : value == "over"  ? kLifetime + 1
                                                    : 0;
    if (value == "sleep") {
      clock.Advance(8 * 3'600'000);
    } else if (value == "wrap" || value == "edge") {
      clock.Advance(TimeUntilWrap(value == "wrap" ? 20 : 5000));
    } else {
      clock.Advance(age != 0 && age < wanted ? wanted - age : 1);
    }
  }

  // What comes of it is not said beforehand. Some things must be so whatever happens; after a
  // disconnect without faults nothing of the tunnel may be left, and from there the model goes on.
  Lines OpenStep(const Event& event) {
    const Lines foreign = ForeignLines(model_.machine().network);
    observer_.Begin();
    const std::string reply = IsOpen(event) ? world_.CarryDisturbed(event) : world_.Carry(event);
    Lines found = CheckOpenReply(reply, event, model_.State() == "stopping");
    if (!world_.ComeToRest()) {
      found.push_back("the service neither ended nor waits for a client");
    }
    for (const std::string& line : observer_.Look("").log) {
      if (!IsKnownLogLine(line)) found.push_back("unknown log line: " + line);
    }
    Settle(found);
    for (const std::string& line : fault::Difference(foreign, ForeignLines(Network()))) {
      if (event.value.starts_with("phys") && line.starts_with("- route")) continue;
      found.push_back("network of others: " + line);
    }
    for (const std::string& path : world_.ChangedFiles()) {
      found.push_back("changed: " + path);
    }
    return found;
  }

  netmodel::Network Network() {
    const auto lock = world_.machine().Lock();
    return world_.machine().network;
  }

  static Lines CheckOpenReply(const std::string& reply, const Event& event, bool isStopping) {
    const bool mayBeNone = isStopping || event.name == "gone" || event.name != "mid" ||
                           event.value.starts_with("kill");
    if (reply == "nobody" || IsWellFormedReply(reply) || (mayBeNone && reply == "none")) {
      return {};
    }
    return {"reply of no known form: " + reply};
  }

  void Settle(Lines& found) {
    sim::Machine& machine = world_.machine();
    machine.clock.Advance(kLifetime + 10'000);
    for (size_t left = world_.Turns().size(); left > 0; --left) {
      const std::string reply = world_.Carry({"disconnect", ""});
      if (!world_.ComeToRest()) found.push_back("no rest after a disconnect");
      if (reply != R"({"ok":true,"running":false,"error":""})" && reply != "none") {
        found.push_back("disconnect after it: " + reply);
      }
    }
    machine.clock.Advance(700'000);
    model_.Adopt(Network(), ChildrenOf(machine), world_.Turns(), ConfigOf(machine));
    for (const std::string& line : Differences(model_, machine)) {
      found.push_back("after it, " + line);
    }
  }

  Table& table_;
  World world_;
  Model model_;
  Observer observer_;
};

}  // namespace

Outcome RunSequence(const Events& events, Table& table) {
  return Run(table).Do(events);
}

}  // namespace sequence
