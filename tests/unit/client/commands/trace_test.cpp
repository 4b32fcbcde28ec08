#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class TraceTest : public unit::ClientTest {};

TEST_F(TraceTest, ShowsTheLastConnectBesideTheMediansOfThoseBefore) {
  machine.files.Put(unit::kTrace,
                    "\xEF\xBB\xBF" + unit::RecordedConnect() + unit::RecordedLines(5));
  EXPECT_EQ(Run({L"trace"}), 0);
  EXPECT_EQ(Out(),
            "Connect 2 of 2, not complete, last mark after 0.03 s\n"
            "  old tunnel stopped              0 ms                      median     0 ms\n"
            "  stale helpers looked for        8 ms  █████▌              median     8 ms\n"
            "  physical route found           14 ms       █████████▊     median    14 ms   ◄\n"
            "  panel pinned                    1 ms                 ▊    median     1 ms\n"
            "  Xray listening                  3 ms                 ██▏  median   139 ms\n"
            "  ended before: Xray listening\n");
  EXPECT_EQ(Err(), "");
}

TEST_F(TraceTest, LastShowsSeveral) {
  machine.files.Put(unit::kTrace,
                    unit::RecordedLines(1) + unit::RecordedConnect() + unit::RecordedLines(2));
  EXPECT_EQ(Run({L"trace", L"--last", L"2"}), 0);
  EXPECT_EQ(Out().find("Connect 1 of 3"), std::string::npos);
  EXPECT_EQ(Out().find("Connect 2 of 3, complete, 0.61 s\n"), 0u);
  EXPECT_NE(Out().find("\n\nConnect 3 of 3, not complete, last mark after 0.01 s\n"),
            std::string::npos);
}

TEST_F(TraceTest, AsJsonAllConnectsAreThere) {
  machine.files.Put(unit::kTrace, unit::RecordedLines(1) + unit::RecordedLines(1) + "torn\n");
  EXPECT_EQ(Run({L"trace", L"--json"}), 0);
  EXPECT_EQ(Out(), R"({
  "schema": 1,
  "file": "C:\\Program Files\\Tavrin\\connect-timing.log",
  "readable": true,
  "earlierLeftOut": false,
  "strangeLines": 1,
  "connects": [
    {
      "complete": false,
      "milliseconds": 0,
      "marks": [
        {
          "label": "stop() idle",
          "step": 0,
          "total": 0
        }
      ]
    },
    {
      "complete": false,
      "milliseconds": 0,
      "marks": [
        {
          "label": "stop() idle",
          "step": 0,
          "total": 0
        }
      ]
    }
  ]
}
)");
  EXPECT_EQ(Err(), "1 line of the file can't be read and count for nothing.\n");
}

TEST_F(TraceTest, APageIsWritten) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect() + unit::RecordedConnect());
  EXPECT_EQ(Run({L"trace", L"--html", L"C:\\page.html"}), 0);
  EXPECT_EQ(Out(), "2 connects written to C:\\page.html\n");
  const std::string page = machine.files.Read(L"C:\\page.html").value_or("");
  EXPECT_EQ(page.find("<!DOCTYPE html>\n<html lang=\"en\">\n"), 0u);
  EXPECT_NE(page.find("</html>\n"), std::string::npos);
}

TEST_F(TraceTest, APageThatCantBeWrittenIsSaid) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  EXPECT_EQ(Run({L"trace", L"--html", L"Q:\\page.html"}), 1);
  EXPECT_EQ(Err(),
            "The page can't be written: Q:\\page.html\n"
            "  What to do: name a file in a directory of your own, on a disk with room.\n");
}

TEST_F(TraceTest, OnAFullDiskThePageFromBeforeStaysAndNothingIsHalfMade) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  machine.files.Put(L"C:\\pages\\page.html", "from before");
  machine.files.Put(L"C:\\pages\\page.html.part");
  machine.files.SetWritesFail(L"C:\\pages\\page.html.part", true);
  EXPECT_EQ(Run({L"trace", L"--html", L"C:\\pages\\page.html"}), 1);
  EXPECT_EQ(Out(), "");
  EXPECT_EQ(machine.files.List(L"C:\\pages"), std::vector<std::string>{"C:\\pages\\page.html"});
  EXPECT_EQ(machine.files.Read(L"C:\\pages\\page.html"), "from before");
}

TEST_F(TraceTest, APageThatCantTakeItsPlaceLeavesNothingBeside) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  machine.files.Put(L"C:\\pages\\page.html", "from before");
  machine.files.SetReadOnly(L"C:\\pages\\page.html", true);
  EXPECT_EQ(Run({L"trace", L"--html", L"C:\\pages\\page.html"}), 1);
  EXPECT_EQ(machine.files.List(L"C:\\pages"), std::vector<std::string>{"C:\\pages\\page.html"});
}

TEST_F(TraceTest, EachOfSeveralStandsBesideTheMediansBeforeIt) {
  std::string text;
  for (const char* time : {"100", "300", "200"}) {
    text +=
        unit::RecordedLines(1) + "ipv6 leak blocked            +  100ms  total  " + time + "ms\r\n";
  }
  machine.files.Put(unit::kTrace, text);
  EXPECT_EQ(Run({L"trace", L"--last", L"2"}), 0);
  EXPECT_NE(Out().find("300 ms  ██████████████████  median   100 ms   ◄\n"), std::string::npos)
      << Out();
  EXPECT_NE(Out().find("200 ms  ██████████████████  median   200 ms   ◄\n"), std::string::npos);
}

TEST_F(TraceTest, AHugeFileIsReadFromItsEnd) {
  std::string text;
  while (text.size() < (100u << 20)) {
    text += unit::RecordedConnect();
  }
  machine.files.Put(unit::kTrace, text);
  EXPECT_EQ(Run({L"trace"}), 0);
  EXPECT_EQ(Err(), "The file is larger than 1 MiB; what is older was left out.\n");
  EXPECT_NE(Out().find("complete, 0.61 s\n"), std::string::npos);
  EXPECT_EQ(machine.files.BytesRead(unit::kTrace), 1'048'576u);
}

TEST_F(TraceTest, NoFileAndNoConnectAreToldApart) {
  EXPECT_EQ(Run({L"trace"}), 1);
  EXPECT_EQ(Err(),
            "The trace can't be read: C:\\Program Files\\Tavrin\\connect-timing.log\n"
            "  What to do: connect once; each connect writes its steps there.\n");
  machine.files.Put(unit::kTrace, "not a trace\n");
  EXPECT_EQ(Run({L"trace"}), 1);
  EXPECT_NE(Err().find("The trace holds no connect: "), std::string::npos);
}

}  // namespace
}  // namespace vpn
