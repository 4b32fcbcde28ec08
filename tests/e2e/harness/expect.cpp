#include "tests/e2e/harness/expect.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/netmodel/network_json.h"

namespace e2e {
namespace {

std::string LineOr(const Lines& lines, std::size_t index) {
  return index < lines.size() ? lines[index] : "(no more lines)";
}

std::string Joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

}  // namespace

void ExpectLines(const Lines& actual, const Lines& expected) {
  for (std::size_t i = 0; i < std::max(actual.size(), expected.size()); ++i) {
    if (LineOr(actual, i) == LineOr(expected, i)) continue;
    ADD_FAILURE() << "line " << i + 1 << " is\n  " << LineOr(actual, i) << "\nand should be\n  "
                  << LineOr(expected, i) << "\nin all:\n"
                  << Joined(actual);
    return;
  }
}

void ExpectRun(const Lines& actual, const Lines& expected) {
  const auto found = std::search(actual.begin(), actual.end(), expected.begin(), expected.end());
  EXPECT_NE(found, actual.end()) << "these lines:\n"
                                 << Joined(expected) << "are not among:\n"
                                 << Joined(actual);
}

Lines SplitLines(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return lines;
}

void ExpectText(std::string_view actual, std::string_view expected) {
  if (actual == expected) return;
  ExpectLines(SplitLines(actual), SplitLines(expected));
  EXPECT_EQ(actual.size(), expected.size()) << "the texts differ in their line ends";
}

void ExpectSameNetwork(const netmodel::Network& actual, const netmodel::Network& expected) {
  netmodel::Network counted = actual;
  counted.nextIndex = expected.nextIndex;
  if (counted == expected) return;
  ADD_FAILURE() << "the machine's network is not as it should be";
  ExpectText(netmodel::FormatNetwork(counted), netmodel::FormatNetwork(expected));
}

}  // namespace e2e
