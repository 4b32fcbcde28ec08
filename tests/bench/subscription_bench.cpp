// Subscriptions of 100 to 10,000 links, as a panel sends them (one line of base64) and as text.
#include "src/panel/subscription.h"

#include <string>
#include <vector>

#include "tests/bench/plain_copy.h"
#include "tests/sim/machine.h"

namespace {

std::string Links(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += "vless://7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11@n" + std::to_string(i) +
            ".node.example:443?mode=multi&security=reality&encryption=none&type=tcp"
            "&flow=xtls-rprx-vision&pbk=K3yAbcdefghijklmnopqrstuvwxyz0123456789-_ABC&sid=01ab"
            "&sni=www.site.example&servername=www.site.example&spx=%2F&fp=chrome"
            "#%E9%A6%99%E6%B8%AF+" +
            std::to_string(i) + "\r\n";
  }
  return text;
}

std::string Base64(const std::string& bytes) {
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t at = 0; at + 2 < bytes.size(); at += 3) {  // what is left over is line ends
    unsigned group = 0;
    for (size_t i = 0; i < 3; ++i) {
      group = group << 8 | static_cast<unsigned char>(bytes[at + i]);
    }
    for (int shift = 18; shift >= 0; shift -= 6) {
      text += kAlphabet[group >> shift & 0x3F];
    }
  }
  return text;
}

void Decode(benchmark::State& state, const std::string& text) {
  const sim::InstalledMachine machine;
  bench::Measure(state, text, state.range(0), [&] {
    std::vector<vpn::NodeInfo> nodes;
    vpn::ParseSubscription(text, nodes);
    if (nodes.size() != static_cast<size_t>(state.range(0))) {
      state.SkipWithError("not every link became a node");
    }
    machine->calls.Clear();
  });
}

void SubscriptionBase64(benchmark::State& state) {
  Decode(state, Base64(Links(static_cast<int>(state.range(0))) + "\r\n\r\n"));
}
BENCHMARK(SubscriptionBase64)->RangeMultiplier(10)->Range(100, 10000)->Complexity(benchmark::oN);

void SubscriptionPlain(benchmark::State& state) {
  Decode(state, Links(static_cast<int>(state.range(0))));
}
BENCHMARK(SubscriptionPlain)->RangeMultiplier(10)->Range(100, 10000)->Complexity(benchmark::oN);

}  // namespace
