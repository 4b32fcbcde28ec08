// Many sequences, in processes of their own: a killed service leaves its threads behind for the
// life of its program, and a sequence that hangs or crashes must not take the others along.
#ifndef TAVRIN_TESTS_SEQUENCE_BATCH_H_
#define TAVRIN_TESTS_SEQUENCE_BATCH_H_

#include <cstdint>
#include <string>

#include "tests/sequence/events.h"
#include "tests/sequence/table.h"

namespace sequence {

struct Range {
  std::uint64_t from = 0;
  std::uint64_t count = 0;
};

struct Report {
  std::uint64_t done = 0;
  std::string failure;  // in words, with the command that replays it; empty: all hold
  Table table;
};

// Runs the seeds of the range, `jobs` processes at a time, to the end or to the first failure.
Report RunAll(Range range, size_t jobs);

// What a process of its own does: runs the seeds and says on the standard output what came of each.
int RunAsWorker(Range range);
// Replays one sequence and tells what it finds. 0 when the model holds.
int Replay(const Events& events);

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_BATCH_H_
