#include "client/doctor/configuration_test_run.h"

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

class WithoutLogFilesTest : public sim::MachineTest {};

TEST_F(WithoutLogFilesTest, BothLogsLoseTheirNamesAndAllElseStays) {
  EXPECT_EQ(WithoutLogFiles(R"({ "log": { "loglevel": "warning", "error": "C:\\run\\e.log",
    "access" : "C:\\a.log" }, "error": ["error"], "x": "error" })"),
            R"({ "log": { "loglevel": "warning", "error": "",
    "access" : "" }, "error": ["error"], "x": "error" })");
}

TEST_F(WithoutLogFilesTest, KeysAreReadAsXrayReadsThem) {
  EXPECT_EQ(WithoutLogFiles(R"({"Error":"a","err\u006fr":"b","ACCESS":"c"})"),
            R"({"Error":"","err\u006fr":"","ACCESS":""})");
}

TEST_F(WithoutLogFilesTest, QuotesInAValueEndNothing) {
  EXPECT_EQ(WithoutLogFiles(R"({"error":"a\"b","id":"\"error\":\"x\""})"),
            R"({"error":"","id":"\"error\":\"x\""})");
}

TEST_F(WithoutLogFilesTest, DamageStays) {
  EXPECT_EQ(WithoutLogFiles(""), "");
  EXPECT_EQ(WithoutLogFiles("no json"), "no json");
  EXPECT_EQ(WithoutLogFiles("{\""), "{\"");
  EXPECT_EQ(WithoutLogFiles(R"({"error":)"), R"({"error":)");
  EXPECT_EQ(WithoutLogFiles(R"({"error":5})"), R"({"error":5})");
  EXPECT_EQ(WithoutLogFiles(R"({"error":"never closed)"), R"({"error":"")");
}

}  // namespace
}  // namespace vpn
