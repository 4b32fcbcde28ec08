// The network as lines of text in a fixed order, so that two states compare by what they hold and a
// difference can be read.
#ifndef TAVRIN_TESTS_FAULT_NETWORK_LINES_H_
#define TAVRIN_TESTS_FAULT_NETWORK_LINES_H_

#include <string>
#include <vector>

#include "tests/netmodel/network_model.h"

namespace fault {

using Lines = std::vector<std::string>;

// `adapter 以太网: …`, `ipv6 of 以太网: …`, `route 以太网 0.0.0.0/0 via 192.168.1.1 metric 25`,
// `ipv6 route 以太网 ::/0`, sorted.
Lines LinesOf(const netmodel::Network& network);

// The lines of `wanted` that `lines` does not hold.
Lines Missing(const Lines& wanted, const Lines& lines);

// `+ line` for what `now` has beyond `expected`, `- line` for what it lacks; empty when they agree.
Lines Difference(const Lines& expected, const Lines& now);

}  // namespace fault

#endif  // TAVRIN_TESTS_FAULT_NETWORK_LINES_H_
