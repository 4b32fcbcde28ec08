// What all measuring programs have in common: the command line, the clock and the lines they write.
#ifndef TAVRIN_TESTS_BENCH_SERVICE_RECORD_H_
#define TAVRIN_TESTS_BENCH_SERVICE_RECORD_H_

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

// `PROGRAM --out FILE [--quick] [--rounds N]`
struct Arguments {
  std::wstring out;
  bool quick = false;
  std::size_t rounds = 0;  // 0: not given
};

// Throws std::runtime_error for any other command line.
Arguments ParseArguments(int argc, const wchar_t* const* argv);

// Nanoseconds from some moment on.
double Now();

// One number for each round, in nanoseconds unless the unit says otherwise.
struct Samples {
  std::string figure;
  std::string subject;  // "service", or what it is held against
  std::vector<double> values;
  std::string unit = "ns";
  std::size_t size = 0;
};

// Appends a line of JSON. Throws std::runtime_error when it can't.
void Append(const std::wstring& path, const Samples& samples);

// The value that `share` of all values (0 to 1) do not exceed. Not for an empty list.
double Quantile(std::vector<double> values, double share);

// Calls `measure` and gives the exit code: 1, with the reason, for what it throws.
int RunBench(int argc, const wchar_t* const* argv, void (*measure)(const Arguments&));

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_SERVICE_RECORD_H_
