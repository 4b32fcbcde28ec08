// Measures several pieces of work in turn, so that whatever slows the machine down slows them all,
// and writes what was measured as lines of JSON:
//   {"figure":"panel-reply","subject":"service","size":1024,"unit":"ns","samples":[812.4,…]}
// A time is good only beside the other subjects of its figure, measured in the same run.
#ifndef TAVRIN_TESTS_BENCH_ROUNDS_H_
#define TAVRIN_TESTS_BENCH_ROUNDS_H_

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

// --out FILE [--quick] [--rounds N] [--figure NAME]
struct Options {
  std::string out;
  std::string figure;  // empty: all
  bool quick = false;  // few sizes, short samples
  int rounds = 15;
};

// Ends the program with exit code 2 for a command line that is not as above.
Options ReadOptions(int argc, char** argv);

// One subject at one size: "service", or the name of what stands beside it.
struct Case {
  std::string subject;
  std::size_t size = 0;
  std::function<void()> work;
};

using Cases = std::vector<Case>;

// 1, 10, 100 and so on up to `most`, if that is a power of ten; else `most` and its tenths. Only
// the least two with `quick`.
std::vector<std::size_t> Sizes(std::size_t most, bool quick);

// Lines of JSON in a file of their own. A file that can't be written ends the program.
class Report {
 public:
  explicit Report(std::string path);
  void add(const std::string& figure, const std::string& subject, std::size_t size,
           const std::string& unit, const std::vector<double>& samples);
  ~Report();

 private:
  std::string path_;
  std::string lines_;
};

// In each round every case once, in their order; the samples are nanoseconds of this thread's time
// for one run of the work, which is repeated until the clock can tell it well.
void Measure(const std::string& figure, const Cases& cases, const Options& options, Report& report);

// The compiler has to have `value` ready, and may know nothing of the memory behind it.
template <class Value>
void Keep(const Value& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

// Ends the program: what is measured did not do the work that it is measured for.
[[noreturn]] void Fail(const std::string& text);

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_ROUNDS_H_
