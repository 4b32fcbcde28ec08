// Bodies of 64 KiB to 1 MiB through the panel's JSON scanners.
#include <string>
#include <vector>

#include "src/panel/json_reader.h"
#include "tests/bench/bodies.h"
#include "tests/bench/plain_copy.h"

namespace {

void JsonList(benchmark::State& state) {
  const std::string body = bench::PlanList(static_cast<size_t>(state.range(0)));
  bench::Measure(state, body, state.range(0), [&] {
    std::int64_t sum = 0;
    for (const std::string& plan : vpn::JsonObjectArray(body, "data")) {
      sum += vpn::JsonInt(plan, "id", 0) + vpn::JsonOptionalInt(plan, "year_price").value_or(0);
      benchmark::DoNotOptimize(vpn::JsonString(plan, "name"));
    }
    benchmark::DoNotOptimize(sum);
  });
}
BENCHMARK(JsonList)->RangeMultiplier(2)->Range(1 << 16, 1 << 20)->Complexity(benchmark::oN);

void JsonLongText(benchmark::State& state) {
  const std::string body = bench::LongText(static_cast<size_t>(state.range(0)));
  bench::Measure(state, body, state.range(0), [&] {
    const std::string data = vpn::JsonDataObject(body);
    benchmark::DoNotOptimize(vpn::JsonString(data, "content"));
    benchmark::DoNotOptimize(vpn::JsonInt(data, "id", 0));
  });
}
BENCHMARK(JsonLongText)->RangeMultiplier(2)->Range(1 << 16, 1 << 20)->Complexity(benchmark::oN);

// Nothing closes, so every scan goes to the end.
void JsonThatNeverCloses(benchmark::State& state) {
  const std::string body = R"({"data":[)" + std::string(static_cast<size_t>(state.range(0)), '{');
  bench::Measure(state, body, state.range(0), [&] {
    benchmark::DoNotOptimize(vpn::JsonDataObject(body));
    benchmark::DoNotOptimize(vpn::JsonObjectArray(body, "data"));
  });
}
BENCHMARK(JsonThatNeverCloses)
    ->RangeMultiplier(2)
    ->Range(1 << 16, 1 << 20)
    ->Complexity(benchmark::oN);

}  // namespace
