#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

constexpr wchar_t kFile[] = L"C:\\report.md";

class ReportTest : public unit::DoctorTest {
 protected:
  std::string Report() {
    EXPECT_EQ(Run({L"report", kFile}), 0);
    return machine.files.Read(kFile).value_or("");
  }
  bool Holds(const std::string& report, const std::string& text) {
    return report.find(text) != std::string::npos;
  }
};

TEST_F(ReportTest, HasEverythingThatSupportAsksFor) {
  machine.files.Put(InRuntime(L"tavrin-service.log"), "Runtime C:\\run\nipc op=connect\n");
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  machine.files.Put(InRuntime(L"session.json.xray.json"), R"({"vnext":[{"port":443}]})");
  const std::string report = Report();
  EXPECT_EQ(report.find("# Tavrin: report for support\n\n2025-06-15 12:00 UTC, tavrinctl 0.1.0, "
                        "service 0.1.0\n\n## Doctor\n\n```text\n✓ Windows            version 10.0"),
            0u);
  EXPECT_TRUE(Holds(report, "✗ Service            not installed and not running\n    run Tavrin"));
  EXPECT_TRUE(Holds(report,
                    "## Service log, the last 200 lines\n\n```text\nRuntime C:\\run\n"
                    "ipc op=connect\n```\n"));
  EXPECT_TRUE(Holds(report, "## Connects, the last 20\n\n```text\nConnect 1, complete, 0.61 s\n"));
  EXPECT_TRUE(Holds(report,
                    "## Generated configuration, its values masked\n\n```text\n"
                    "{\"vnext\":[{\"port\":*}]}\n```\n"));
  EXPECT_EQ(Out(), "Written to C:\\report.md. Passwords, keys and tokens are left out.\n");
}

TEST_F(ReportTest, HoldsNoSecretOfTheAccount) {
  const std::string config = R"({"vnext":[{"address":"203.0.113.77","users":[
    {"id":"6f2c9d4e-5b1a-4c3d-8e7f-0123456789ab"}]}],"publicKey":"AAAAAAAAAAAAAAAAAAAA",
    "shortId":"0123abcd","serverName":"www.site.example"})";
  machine.files.Put(InRuntime(L"session.json.xray.json"), config);
  machine.files.Put(InRuntime(L"session.json"),
                    R"({"email":"someone@mail.example","auth_data":"c0ffee-credential"})");
  machine.files.Put(InRuntime(L"tavrin-service.log"),
                    "ipc op=c0ffee-credential\nsomeone@mail.example 0123abcd secret\n"
                    "6f2c9d4e-5b1a-4c3d-8e7f-0123456789ab www.site.example\n");
  const std::string report = Report();
  for (const char* secret :
       {"6f2c9d4e", "c0ffee", "someone", "0123abcd", "AAAAAAAA", "www.site.example", " secret"}) {
    EXPECT_FALSE(Holds(report, secret)) << secret;
  }
  EXPECT_TRUE(Holds(report, "so***@mail.example"));
}

TEST_F(ReportTest, OnlyTheEndsOfLongFilesAreInIt) {
  std::string log;
  std::string trace;
  for (int at = 1; at <= 300; ++at) {
    log += "line " + std::to_string(at) + "\n";
    trace += unit::RecordedLines(1);
  }
  machine.files.Put(InRuntime(L"tavrin-service.log"), log);
  machine.files.Put(unit::kTrace, trace);
  const std::string report = Report();
  EXPECT_TRUE(Holds(report, "```text\nline 101\nline 102\n"));
  EXPECT_TRUE(Holds(report, "line 300\n```\n"));
  EXPECT_TRUE(Holds(report, "```text\nConnect 281, not complete, 0.00 s\n"));
}

TEST_F(ReportTest, FilesThatCantBeReadAreSaid) {
  const std::string report = Report();
  EXPECT_TRUE(Holds(report, "## Service log\n\nIt can't be read.\n"));
  EXPECT_TRUE(Holds(report, "## Connects\n\nThe trace can't be read.\n"));
  EXPECT_TRUE(Holds(report, "## Generated configuration\n\nIt can't be read.\n"));
  machine.files.Put(unit::kTrace, "rubbish\n");
  EXPECT_TRUE(Holds(Report(), "## Connects, the last 20\n\nNone.\n"));
}

TEST_F(ReportTest, AFileThatCantBeWrittenIsSaid) {
  EXPECT_EQ(Run({L"report", L"Q:\\report.md"}), 1);
  EXPECT_EQ(Err(),
            "The report can't be written: Q:\\report.md\n"
            "  What to do: name a file in a directory of your own.\n");
}

}  // namespace
}  // namespace vpn
