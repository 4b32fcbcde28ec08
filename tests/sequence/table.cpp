#include "tests/sequence/table.h"

#include <cstdio>

#include "tests/sequence/events.h"

namespace sequence {
namespace {

struct Impossible {
  const char* state;
  const char* event;
  const char* reason;
};

// What can't be, each with its reason. Empty: every event is tried in every state, and one that
// finds nothing to act on (a stop with no service) has to change nothing.
const std::vector<Impossible>& ImpossiblePairs() {
  static const auto& pairs = *new std::vector<Impossible>{};
  return pairs;
}

bool IsImpossible(const std::string& state, const std::string& event) {
  for (const Impossible& pair : ImpossiblePairs()) {
    if (pair.state == state && pair.event == event) {
      return true;
    }
  }
  return false;
}

}  // namespace

const std::vector<std::string>& Table::States() {
  static const auto& states = *new std::vector<std::string>{
      "none",       "leftovers",  "idle",       "leftovers, idle", "up",
      "up (panel)", "dead child", "no adapter", "stopping",        "two"};
  return states;
}

std::uint64_t Table::PairCount() {
  return States().size() * AllEventKinds().size();
}

Table::Pair Table::PairOf(std::uint64_t seed) {
  const auto& events = AllEventKinds();
  return {States()[seed / events.size() % States().size()], events[seed % events.size()].name};
}

void Table::Add(const std::string& state, const std::string& event, std::uint64_t count) {
  counts_[{state, event}] += count;
}

std::vector<std::string> Table::Mistakes() const {
  std::vector<std::string> mistakes;
  for (const std::string& state : States()) {
    for (const EventKind& kind : AllEventKinds()) {
      const bool met = counts_.count({state, kind.name}) != 0;
      if (met == IsImpossible(state, kind.name)) {
        mistakes.push_back(state + ", " + kind.name);
      }
    }
  }
  return mistakes;
}

std::string Table::Text() const {
  std::string text(12, ' ');
  const auto cell = [&text](const std::string& content) {
    text += std::string(content.size() < 16 ? 16 - content.size() : 1, ' ') + content;
  };
  for (const std::string& state : States()) {
    cell(state);
  }
  text += '\n';
  for (const EventKind& kind : AllEventKinds()) {
    text += kind.name + std::string(12 - kind.name.size(), ' ');
    for (const std::string& state : States()) {
      const auto found = counts_.find({state, kind.name});
      cell(found != counts_.end()           ? std::to_string(found->second)
           : IsImpossible(state, kind.name) ? "-"
                                            : "HOLE");
    }
    text += '\n';
  }
  return text;
}

}  // namespace sequence
