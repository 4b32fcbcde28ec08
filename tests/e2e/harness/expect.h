// Comparisons that say where two long results differ.
#ifndef TAVRIN_TESTS_E2E_HARNESS_EXPECT_H_
#define TAVRIN_TESTS_E2E_HARNESS_EXPECT_H_

#include <string>
#include <string_view>
#include <vector>

#include "tests/netmodel/network_model.h"

namespace e2e {

using Lines = std::vector<std::string>;

// Equal, line for line.
void ExpectLines(const Lines& actual, const Lines& expected);
// `expected` stands somewhere in `actual`, without a gap.
void ExpectRun(const Lines& actual, const Lines& expected);
// Equal texts; a difference is shown with its line.
void ExpectText(std::string_view actual, std::string_view expected);
// Equal but for the numbers that adapters take with them.
void ExpectSameNetwork(const netmodel::Network& actual, const netmodel::Network& expected);

Lines SplitLines(std::string_view text);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_EXPECT_H_
