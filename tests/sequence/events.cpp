#include "tests/sequence/events.h"

#include <algorithm>
#include <random>

#include "tests/sequence/table.h"

namespace sequence {
namespace {

// Standard distributions differ between libraries; a seed has to give the same sequence everywhere.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : engine_(seed * 0x9E3779B97F4A7C15U + 1) {}
  size_t Below(size_t count) { return static_cast<size_t>(engine_() % count); }
  bool Percent(size_t chance) { return Below(100) < chance; }

 private:
  std::mt19937_64 engine_;
};

// The value that does no harm, by which a condition comes back to what a connect needs.
std::string HarmlessValue(const EventKind& kind) {
  return kind.values.front();
}

bool IsCondition(const EventKind& kind) {
  return kind.values.size() > 1 && kind.weight < 0;
}

const EventKind& KindOf(const std::string& name) {
  const auto& kinds = AllEventKinds();
  return *std::find_if(kinds.begin(), kinds.end(),
                       [&](const EventKind& kind) { return kind.name == name; });
}

// Where in a connect or disconnect something happens: in front of the n-th call of a function.
std::string SomePlace(Dice& dice) {
  static const auto& functions = *new std::vector<std::string>{"Sleep",
                                                               "GetAdaptersAddresses",
                                                               "WaitForSingleObject",
                                                               "CreateProcessW",
                                                               "connect",
                                                               "CreateIpForwardEntry2",
                                                               "DeleteIpForwardEntry2",
                                                               "GetIpForwardTable2",
                                                               "_wfopen_s",
                                                               "ConvertInterfaceAliasToLuid",
                                                               "TerminateProcess",
                                                               "CreateJobObjectW",
                                                               "ResumeThread",
                                                               "AssignProcessToJobObject",
                                                               "SetInterfaceDnsSettings",
                                                               "CreateUnicastIpAddressEntry",
                                                               "WinHttpSendRequest",
                                                               "GetFileAttributesW"};
  const std::string& function = functions[dice.Below(functions.size())];
  return "@" + function + "#" + std::to_string(1 + dice.Below(dice.Percent(30) ? 12 : 4));
}

Event Draw(const EventKind& kind, Dice& dice) {
  std::string value = kind.values[dice.Below(kind.values.size())];
  if (IsCondition(kind) && dice.Percent(45)) {
    value = HarmlessValue(kind);
  }
  if (kind.name == "mid") {
    value += SomePlace(dice);
  } else if (kind.name == "fail") {
    value += std::to_string(1 + dice.Below(value == "c" ? 260 : 60));
  } else if (kind.name == "burst") {
    value += std::to_string(1 + dice.Below(value == "c" ? 260 : 60)) + "+" +
             std::to_string(2 + dice.Below(20));
  }
  return {kind.name, value};
}

const EventKind& DrawKind(Dice& dice) {
  static const int total = [] {
    int sum = 0;
    for (const EventKind& kind : AllEventKinds()) {
      sum += std::abs(kind.weight);
    }
    return sum;
  }();
  int left = static_cast<int>(dice.Below(static_cast<size_t>(total)));
  for (const EventKind& kind : AllEventKinds()) {
    left -= std::abs(kind.weight);
    if (left < 0) {
      return kind;
    }
  }
  return AllEventKinds().front();
}

bool EndsService(const Event& event) {
  return event.name == "stop" || event.name == "kill" || event.name == "orphan" ||
         event.name == "shutdown";
}

void AppendRandom(Dice& dice, size_t count, Events& events) {
  while (count-- > 0) {
    const bool ended = !events.empty() && EndsService(events.back());
    events.push_back(Draw(ended && dice.Percent(80) ? KindOf("start") : DrawKind(dice), dice));
  }
}

}  // namespace

// A negative weight marks a condition.
const std::vector<EventKind>& AllEventKinds() {
  static const auto& kinds = *new std::vector<EventKind>{
      {"connect", {"", "Tokyo", "Osaka", "Kyoto", "nowhere"}, 46},
      {"disconnect", {""}, 14},
      {"status", {""}, 10},
      {"shutdown", {""}, 3},
      {"bad", {"op", "none", "number", "text", "case"}, 4},
      {"frame", {"empty", "huge", "left", "cut", "slow"}, 4},
      {"gone", {"status", "connect", "disconnect"}, 3},
      {"account",
       {"local", "panel", "none", "expired", "damaged", "gone", "stranger", "nodeless", "signedout",
        "noplan"},
       -7},
      {"node", {"0", "1", "2", "3"}, -5},
      {"hosts", {"0", "1", "2"}, -3},
      {"names", {"0", "1", "2"}, -3},
      {"files", {"ok", "noxray", "notun", "nowintun"}, -2},
      {"dir", {"back", "gone"}, -2},
      {"disk", {"ok", "full"}, -2},
      {"panel", {"ok", "refuse", "cut", "hang", "500", "slow", "sub"}, -5},
      {"xray", {"ok", "dead", "deaf", "late", "faints", "nostart", "stubborn"}, -5},
      {"tun", {"ok", "dead", "noadapter", "down", "late", "ghost", "nostart", "numbered"}, -5},
      {"netsh", {"ok", "hang", "fail"}, -3},
      {"vpn", {"off", "on"}, -2},
      {"proxy", {"off", "on", "bare"}, -2},
      {"port", {"free", "taken"}, -2},
      {"phys", {"wired", "gateway", "both", "wireless", "none", "renamed"}, -6},
      {"dns", {"dhcp", "left", "two"}, -2},
      {"die", {"xray", "tun", "both"}, 5},
      {"adapter", {"vanish", "rename", "reindex", "down"}, 4},
      {"foreign", {"pin", "split", "other"}, 2},
      {"clock", {"tick", "under", "exact", "over", "sleep", "wrap", "edge"}, 10},
      {"start", {"daemon", "owner", "console", "service", "lost"}, 10},
      {"second", {"owner", "daemon"}, 4},
      {"stop", {"1", "1", "2"}, 4},
      {"kill", {"1", "1", "2"}, 4},
      {"orphan", {"1", "1", "2"}, 3},
      {"mid", {"sleep", "vanish", "xray", "tun", "phys", "kill", "stop", "wrap"}, 8},
      {"fail", {"c", "c", "d"}, 6},
      {"burst", {"c", "c", "d"}, 4},
  };
  return kinds;
}

std::string TextOf(const Event& event) {
  return event.value.empty() ? event.name : event.name + ":" + event.value;
}

std::string TextOf(const Events& events) {
  std::string text;
  for (const Event& event : events) {
    text += (text.empty() ? "" : ",") + TextOf(event);
  }
  return text;
}

Events ParseEvents(const std::string& text) {
  Events events;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find(',', at), text.size());
    const std::string part = text.substr(at, end - at);
    const size_t colon = std::min(part.find(':'), part.size());
    events.push_back({part.substr(0, colon), part.substr(std::min(colon + 1, part.size()))});
    at = end + 1;
  }
  return events;
}

Events WayTo(const std::string& state) {
  static const std::string calm =
      "account:local,node:0,files:ok,dir:back,disk:ok,panel:ok,xray:ok,tun:ok,netsh:ok,vpn:off,"
      "proxy:off,port:free,phys:wired,";
  static const std::string none = "kill:1,kill:2,";
  static const auto& ways = *new std::vector<std::pair<std::string, std::string>>{
      {"none", none + calm + "start:console,connect,disconnect,stop:1"},
      {"idle", none + calm + "start:daemon,connect,disconnect"},
      {"up", none + calm + "start:daemon,connect"},
      {"up (panel)", none + calm + "account:panel,start:owner,connect"},
      {"dead child", none + calm + "start:console,connect,die:xray"},
      {"no adapter", none + calm + "start:service,connect,adapter:vanish"},
      {"leftovers", none + calm + "start:daemon,connect,orphan:1"},
      {"leftovers, idle", none + calm + "start:daemon,connect,orphan:1,start:daemon"},
      {"stopping", none + calm + "start:daemon,second:owner,stop:2"},
      {"two", none + calm + "start:daemon,second:daemon,connect"}};
  const auto found =
      std::find_if(ways.begin(), ways.end(), [&](const auto& way) { return way.first == state; });
  return found == ways.end() ? Events() : ParseEvents(found->second);
}

Events MakeSequence(std::uint64_t seed) {
  Dice dice(seed);
  Events events;
  if (dice.Percent(92)) {
    events.push_back(Draw(KindOf("start"), dice));
  }
  const Table::Pair aim = Table::PairOf(seed);
  AppendRandom(dice, dice.Below(14), events);
  for (const Event& event : WayTo(aim.state)) {
    events.push_back(event);
  }
  events.push_back(Draw(KindOf(aim.event), dice));
  const size_t most = 60 - std::min<size_t>(events.size(), 55);
  AppendRandom(dice, 5 + dice.Below(most - 4), events);
  return events;
}

}  // namespace sequence
