// The figures of the benchmarks that are times, each with everything that it needs.
#ifndef TAVRIN_TESTS_BENCH_FIGURES_H_
#define TAVRIN_TESTS_BENCH_FIGURES_H_

#include "tests/bench/rounds.h"

namespace bench {

// A panel's list of servers of 1 KiB to 4 MiB: its nodes, beside three parsers of JSON that fill
// the same nodes, and a plain copy.
Figure PanelReply(bool quick);

// Subscriptions of 10 to 10,000 links, beside a packaged decoder of base64 and a plain copy.
Figure SubscriptionBase64(bool quick);
Figure SubscriptionPlain(bool quick);

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_FIGURES_H_
