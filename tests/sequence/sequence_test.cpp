// Sequences against the model, and the parts by which they are made and shrunk.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/sequence/batch.h"
#include "tests/sequence/pattern.h"
#include "tests/sequence/run.h"
#include "tests/sequence/shrink.h"

namespace sequence {
namespace {

TEST(Sequences, FiveHundredShowWhatTheModelSays) {
  const Report report = RunAll({0, 500}, 2);
  EXPECT_EQ(report.failure, "");
  EXPECT_EQ(report.done, 500u);
  EXPECT_EQ(report.table.Mistakes(), std::vector<std::string>()) << report.table.Text();
}

TEST(SequencePattern, StandsForTheWholeText) {
  const Pattern pattern("route (a|b) [0-9]+ \\{x\\}|b\\.");
  EXPECT_TRUE(pattern.Matches("route b 12 {x}"));
  EXPECT_TRUE(pattern.Matches("b."));
  EXPECT_FALSE(pattern.Matches("route b 12 {x} "));
  EXPECT_FALSE(pattern.Matches(" b."));
  EXPECT_FALSE(pattern.Matches("bx"));
}

TEST(SequenceMaking, ASeedGivesTheSameEventsEachTime) {
  EXPECT_EQ(TextOf(MakeSequence(7)), TextOf(MakeSequence(7)));
  EXPECT_NE(TextOf(MakeSequence(7)), TextOf(MakeSequence(8)));
}

TEST(SequenceMaking, ASequenceHasFiveToSixtyEvents) {
  for (std::uint64_t seed = 0; seed < 2000; ++seed) {
    const size_t size = MakeSequence(seed).size();
    EXPECT_GE(size, 5u) << seed;
    EXPECT_LE(size, 60u) << seed;
  }
}

TEST(SequenceMaking, TheTextOfASequenceGivesItBack) {
  const Events events = MakeSequence(11);
  EXPECT_EQ(ParseEvents(TextOf(events)), events);
  EXPECT_EQ(ParseEvents("connect,xray:deaf"), (Events{{"connect", ""}, {"xray", "deaf"}}));
}

TEST(SequenceMaking, EachStateHasAWayThatLeadsToIt) {
  for (const std::string& state : Table::States()) {
    Events events = WayTo(state);
    events.push_back({"status", ""});
    Table table;
    const Outcome outcome = RunSequence(events, table);
    EXPECT_EQ(outcome.differences, std::vector<std::string>()) << state;
    EXPECT_EQ(table.Counts().count({state, "status"}), 1u) << state;
  }
}

TEST(SequenceShrinking, KeepsWhatTheFailureNeeds) {
  const auto holds = [](const Events& events, const char* name) {
    return std::any_of(events.begin(), events.end(),
                       [&](const Event& event) { return event.name == name; });
  };
  const Events fewest = Shrink(ParseEvents("a,b,c,d,e,f,g,h"), [&](const Events& events) {
    return holds(events, "c") && holds(events, "g");
  });
  EXPECT_EQ(TextOf(fewest), "c,g");
}

TEST(SequenceTable, NamesAPairThatWasNotMet) {
  Table table;
  for (const std::string& state : Table::States()) {
    for (const EventKind& kind : AllEventKinds()) {
      if (state != "two" || kind.name != "kill") table.Add(state, kind.name);
    }
  }
  EXPECT_EQ(table.Mistakes(), std::vector<std::string>{"two, kill"});
}

}  // namespace
}  // namespace sequence
