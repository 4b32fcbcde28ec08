// Bodies of 64 KiB to 1 MiB through one HTTP call, from the simulated machine's peer.
#include <string>

#include "src/panel/panel_client.h"
#include "tests/bench/bodies.h"
#include "tests/bench/plain_copy.h"
#include "tests/sim/machine.h"

namespace {

void HttpBody(benchmark::State& state) {
  const sim::InstalledMachine machine;
  const std::string body = bench::PlanList(static_cast<size_t>(state.range(0)));
  machine->http.On("GET", "https://panel.example/x", {.body = body});
  bench::Measure(state, body, state.range(0), [&] {
    if (vpn::PanelClient{L"https://panel.example/x"}.get(L"").body.size() != body.size()) {
      state.SkipWithError("the body did not come whole");
    }
    machine->http.Forget();
    machine->calls.Clear();
  });
}
BENCHMARK(HttpBody)->RangeMultiplier(2)->Range(1 << 16, 1 << 20)->Complexity(benchmark::oN);

}  // namespace
