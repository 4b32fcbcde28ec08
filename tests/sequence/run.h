// One sequence from its first event to its last, or to the first that shows something else than the
// model says.
#ifndef TAVRIN_TESTS_SEQUENCE_RUN_H_
#define TAVRIN_TESTS_SEQUENCE_RUN_H_

#include <string>
#include <vector>

#include "tests/sequence/events.h"
#include "tests/sequence/table.h"

namespace sequence {

struct Outcome {
  size_t at = 0;                         // which event failed, from 1 on; 0: none
  std::vector<std::string> differences;  // in words
  bool failed() const { return !differences.empty(); }
};

// Adds what the sequence met to `table`.
Outcome RunSequence(const Events& events, Table& table);

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_RUN_H_
