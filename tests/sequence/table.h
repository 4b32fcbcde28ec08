// Which states of the service met which events, and how often.
#ifndef TAVRIN_TESTS_SEQUENCE_TABLE_H_
#define TAVRIN_TESTS_SEQUENCE_TABLE_H_

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace sequence {

class Table {
 public:
  struct Pair {
    std::string state;
    std::string event;
  };

  static const std::vector<std::string>& States();
  static std::uint64_t PairCount();
  // The pair at which a seed aims: all of them in turn.
  static Pair PairOf(std::uint64_t seed);

  void Add(const std::string& state, const std::string& event, std::uint64_t count = 1);
  const std::map<std::pair<std::string, std::string>, std::uint64_t>& Counts() const {
    return counts_;
  }
  // `state, event` for each pair that can occur and did not; and for each that is said not to occur
  // and did.
  std::vector<std::string> Mistakes() const;
  // One row for each event, one column for each state.
  std::string Text() const;

 private:
  std::map<std::pair<std::string, std::string>, std::uint64_t> counts_;
};

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_TABLE_H_
