// The yardstick: a plain copy of the same bytes, measured in the same run.
#ifndef TAVRIN_TESTS_BENCH_PLAIN_COPY_H_
#define TAVRIN_TESTS_BENCH_PLAIN_COPY_H_

#include <benchmark/benchmark.h>

#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

namespace bench {

// Of this thread: time that others took from it does not count.
inline double CpuSeconds() {
  timespec now = {};
  (void)clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

inline double SecondsOfCopy(std::string_view bytes) {
  constexpr int kCopies = 256;
  std::string copy(bytes);  // its pages are there before the clock starts
  const double start = CpuSeconds();
  for (int i = 0; i < kCopies; ++i) {
    std::memcpy(copy.data(), bytes.data(), bytes.size());
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  return (CpuSeconds() - start) / kCopies;
}

// Runs `work` on `bytes` and tells how many plain copies of them it is worth (the counter
// `copies`), with `count` as the size that the growth is judged by.
template <class Work>
void Measure(benchmark::State& state, std::string_view bytes, benchmark::IterationCount count,
             const Work& work) {
  const double start = CpuSeconds();
  for ([[maybe_unused]] const auto round : state) {
    work();
  }
  const double seconds = (CpuSeconds() - start) / static_cast<double>(state.iterations());
  state.counters["copies"] = seconds / SecondsOfCopy(bytes);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
  state.SetComplexityN(count);
}

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_PLAIN_COPY_H_
