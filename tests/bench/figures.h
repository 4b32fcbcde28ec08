// The figures of the benchmarks that are times. Each wants a fresh machine, and arranges it.
#ifndef TAVRIN_TESTS_BENCH_FIGURES_H_
#define TAVRIN_TESTS_BENCH_FIGURES_H_

#include "tests/bench/rounds.h"

namespace bench {

// A panel's list of servers of 1 KiB to 4 MiB: its nodes, beside three parsers of JSON that fill
// the same nodes, and a plain copy. The size is in bytes.
Cases PanelReply(bool quick);

// Subscriptions of 10 to 10,000 links, beside a packaged decoder of base64 and a plain copy. Plain
// links have no decoder; beside them stands the one for the same links in base64.
Cases SubscriptionBase64(bool quick);
Cases SubscriptionPlain(bool quick);

// How the time grows with what the machine holds. The service stands alone here: what is looked at
// is one size beside the next.

// A connect with an account of 1 to 10,000 nodes from a panel: it reads them, takes the last one,
// writes its configuration, and is refused as the first act of the start.
Cases GrowthOfNodes(bool quick);

// The physical route and the look for the two split routes among 1 to 10,000 routes.
Cases GrowthOfRoutes(bool quick);

// The hunt for orphans among 10 to 5,000 processes, a tenth of which have the names of ours.
Cases GrowthOfProcesses(bool quick);

// Every look at a list of 1 to 500 adapters.
Cases GrowthOfAdapters(bool quick);

// 1 to 1,000 panel hosts pinned by a start that then fails, and unpinned by the stop.
Cases GrowthOfPins(bool quick);

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_FIGURES_H_
