// What can happen on the machine, as short texts: `connect:Osaka`, `xray:deaf`, `clock:wrap`. A
// sequence is such texts with commas between them.
#ifndef TAVRIN_TESTS_SEQUENCE_EVENTS_H_
#define TAVRIN_TESTS_SEQUENCE_EVENTS_H_

#include <cstdint>
#include <string>
#include <vector>

namespace sequence {

struct Event {
  std::string name;
  std::string value;  // may be empty
  bool operator==(const Event&) const = default;
};
using Events = std::vector<Event>;

// Which values an event can have, and how often it is drawn beside the others.
struct EventKind {
  std::string name;
  std::vector<std::string> values;  // the first ones, `common` of them, are drawn more often
  int weight;
};
const std::vector<EventKind>& AllEventKinds();

std::string TextOf(const Event& event);
std::string TextOf(const Events& events);
// Nothing is checked but the form; the runner refuses what it doesn't know.
Events ParseEvents(const std::string& text);

// The sequence of a seed: 5 to 60 events. Every seed also aims at one pair of a state and an event.
Events MakeSequence(std::uint64_t seed);

// The events that lead from a fresh machine, or any other, to a state of the table.
Events WayTo(const std::string& state);

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_EVENTS_H_
