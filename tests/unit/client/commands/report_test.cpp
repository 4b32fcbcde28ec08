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
  // A log that quotes everything, in words and inside them.
  void QuoteInLog(const std::vector<std::string>& secrets) {
    std::string log;
    for (const std::string& secret : secrets) {
      log += "ipc op=" + secret + "\n<" + secret + "> x" + secret + "y\n";
    }
    machine.files.Put(InRuntime(L"tavrin-service.log"), log);
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

TEST_F(ReportTest, HoldsNoSecretOfALocalAccount) {
  const std::vector<std::string> secrets = {"secret",
                                            "someone@",
                                            "6f2c9d4e-5b1a-4c3d-8e7f-0123456789ab",
                                            "www.site.example",
                                            "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA",
                                            "0123abcd"};
  std::string config = R"({"vnext":[{"address":"203.0.113.77","users":[)"
                       R"({"id":"6f2c9d4e-5b1a-4c3d-8e7f-0123456789ab"}]}],)"
                       R"("publicKey":"AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA",)"
                       R"("shortId":"0123abcd","serverName":"www.site.example"})";
  machine.files.Put(InRuntime(L"session.json.xray.json"), config);
  QuoteInLog(secrets);
  machine.programs.On(L"xray.exe",
                      sim::Script().Prints("Xray 1.2\nFailed: " + config + "\n").Exits(23, 9));
  const std::string report = Report();
  for (const std::string& secret : secrets) {
    EXPECT_FALSE(Holds(report, secret)) << secret;
  }
  EXPECT_TRUE(Holds(report, "so***@mail.example"));
  EXPECT_TRUE(Holds(report, "ipc op=***\n<***> x***y\n"));
}

TEST_F(ReportTest, HoldsNoSecretOfAPanelsSession) {
  machine.files.Put(InRuntime(L"panel.json"), R"({"apiBase":"https://panel.example"})");
  machine.files.Put(InRuntime(L"session.json"),
                    R"({"email":"someone@mail.example","auth_data":"Bearer c0ffee+cred/x=="})");
  machine.http.Handle([](const sim::HttpRequestRecord&) {
    return std::optional<sim::HttpAnswer>(
        {.status = 400, .body = R"({"message":"no such session Bearer c0ffee+cred/x=="})"});
  });
  const std::vector<std::string> secrets = {"Bearer c0ffee+cred/x==", "someone@"};
  QuoteInLog(secrets);
  const std::string report = Report();
  for (const char* secret : {"c0ffee", "cred/x", "someone@"}) {
    EXPECT_FALSE(Holds(report, secret)) << secret;
  }
  EXPECT_TRUE(Holds(report, "ipc op=***\n<***> x***y\n"));
}

TEST_F(ReportTest, AnAccountsNameThatIsNoAddressIsASecret) {
  machine.files.Put(InRuntime(L"session.json"), R"({"email":"wanderer","auth_data":"abc"})");
  machine.files.Put(InRuntime(L"tavrin-service.log"), "op=wanderer wanderers abc abcd\n");
  const std::string report = Report();
  EXPECT_FALSE(Holds(report, "wanderer"));
  EXPECT_TRUE(Holds(report, "op=*** ***s *** abcd\n"));
}

TEST_F(ReportTest, AHugeSettingsFileIsReadInPart) {
  machine.files.Put(InRuntime(L"session.json"),
                    R"({"auth_data":"c0ffee-credential"})" + std::string(4 << 20, ' '));
  machine.files.Put(InRuntime(L"session.json.xray.json"), std::string(4 << 20, '['));
  machine.files.Put(InRuntime(L"tavrin-service.log"), "op=c0ffee-credential\n");
  const std::string report = Report();
  EXPECT_TRUE(Holds(report, "op=***\n"));
  EXPECT_LT(report.size(), size_t{2} << 20);
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
            "  What to do: name a file in a directory of your own, on a disk with room for it.\n");
}

TEST_F(ReportTest, AFullDiskIsNoSuccess) {
  machine.files.isDiskFull = true;
  EXPECT_EQ(Run({L"report", kFile}), 1);
  EXPECT_EQ(Out(), "");
  EXPECT_FALSE(machine.files.Exists(kFile));
  EXPECT_FALSE(machine.files.Exists(L"C:\\report.md.part"));
}

}  // namespace
}  // namespace vpn
