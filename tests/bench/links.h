// Subscriptions of any length.
#ifndef TAVRIN_TESTS_BENCH_LINKS_H_
#define TAVRIN_TESTS_BENCH_LINKS_H_

#include <cstddef>
#include <string>

namespace bench {

// As a panel writes them: percent-encoded names, CR LF at the end of each. The name of the last is
// LastName of their count.
std::string Links(std::size_t count);
std::wstring LastName(std::size_t count);

// One line of base64.
std::string Encode(const std::string& text);

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_LINKS_H_
