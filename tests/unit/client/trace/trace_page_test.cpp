#include "client/trace/trace_page.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class TracePageTest : public unit::ClientTest {};

std::string PageOf(const std::string& text) {
  return TracePage(ParseTrace(text).connects);
}

TEST_F(TracePageTest, EachBarIsAsLongAsItsTime) {
  const std::string page = PageOf(unit::RecordedConnect());
  EXPECT_NE(page.find(R"(<rect class="bar" data-ms="139" data-start="23" x="37.6" y="2" )"
                      R"(width="227.1" height="12"/>)"),
            std::string::npos);
  EXPECT_NE(page.find(R"(<rect class="bar longest" data-ms="307" data-start="305" x="498.4" y="2" )"
                      R"(width="501.6" height="12"/>)"),
            std::string::npos);
}

TEST_F(TracePageTest, LoadsNothingFromElsewhere) {
  const std::string page = PageOf(unit::RecordedConnect());
  for (const char* sign : {"http:", "https:", "src=", "href=", "<script", "@import", "url("}) {
    EXPECT_EQ(page.find(sign), std::string::npos) << sign;
  }
}

TEST_F(TracePageTest, TheLatestConnectComesFirstAndKnowsTheMedianBefore) {
  const std::string page = PageOf(unit::RecordedConnect() + unit::RecordedConnect());
  const size_t second = page.find("<h2>Connect 2: 0.61 s</h2>");
  const size_t first = page.find("<h2>Connect 1: 0.61 s</h2>");
  ASSERT_NE(second, std::string::npos);
  ASSERT_NE(first, std::string::npos);
  EXPECT_LT(second, first);
  EXPECT_NE(page.find(R"(<td class="number median">307 ms</td>)"), std::string::npos);
  EXPECT_NE(page.find("2 connects, all complete; median 0.61 s. The tallest column stands for "
                      "0.61 s."),
            std::string::npos);
}

// How often a text stands in the page.
size_t CountOf(const std::string& page, const std::string& text) {
  size_t count = 0;
  for (size_t at = page.find(text); at != std::string::npos; at = page.find(text, at + 1)) {
    ++count;
  }
  return count;
}

TEST_F(TracePageTest, ThousandsOfConnectsEachStandBesideTheMediansOfThoseBefore) {
  std::string text;
  for (int at = 1; at <= 5000; ++at) {
    text += unit::RecordedLines(1) + "ipv6 leak blocked            +    1ms  total" +
            std::string(at < 10     ? 5
                        : at < 100  ? 4
                        : at < 1000 ? 3
                                    : 2,
                        ' ') +
            std::to_string(at) + "ms\r\n";
  }
  const std::string page = PageOf(text);
  EXPECT_EQ(CountOf(page, "<section data-total="), 5000u);
  EXPECT_EQ(CountOf(page, "<td class=\"number median\">–</td>"), 2u) << "beside the first one";
  // Of 1 to 4999, and of 1 to 100.
  EXPECT_NE(page.find("5 000 ms</td><td class=\"track\">"), std::string::npos);
  EXPECT_EQ(CountOf(page, "<td class=\"number median\">2 500 ms</td>"), 1u);
  EXPECT_EQ(CountOf(page, "<td class=\"number median\">50 ms</td>"), 2u);
}

TEST_F(TracePageTest, MarksOfAnotherVersionAreSaidAndCanDoNoHarm) {
  const std::string page =
      PageOf(unit::RecordedLines(2) + "<script>&                    +    1ms  total     9ms\r\n");
  EXPECT_NE(page.find("<p class=\"median\">Marks not known to this version: "
                      "&lt;script&gt;&amp;.</p>"),
            std::string::npos);
}

TEST_F(TracePageTest, AConnectThatFailedSaysWhere) {
  const std::string page = PageOf(unit::RecordedLines(5));
  EXPECT_NE(page.find("Not complete: it ended before “Xray listening”."), std::string::npos);
  EXPECT_NE(page.find("1 connect, 1 not complete. The tallest"), std::string::npos);
  EXPECT_NE(page.find(R"(<rect class="column failed" data-total="26")"), std::string::npos);
}

}  // namespace
}  // namespace vpn
