// What is said when no reply comes.
#include "client/commands/asking.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

class AskingTest : public unit::ClientTest {};

TEST_F(AskingTest, AServiceManagerThatTellsNothingIsNotCalledEmpty) {
  machine.faults.FailAlways("OpenSCManagerW", ERROR_ACCESS_DENIED);
  EXPECT_EQ(Run({L"disconnect"}), 2);
  EXPECT_EQ(Err(),
            "The service is not running, and the service manager tells nothing about it.\n"
            "  What to do: run this with administrator's rights.\n");
}

TEST_F(AskingTest, AProcessWithoutAPipeIsNotCalledBusy) {
  machine.processes.Seed(L"C:\\Program Files\\Tavrin\\TavrinService.exe");
  EXPECT_EQ(Run({L"disconnect", L"--json"}), 2);
  EXPECT_EQ(Out(), "{\n  \"schema\": 1,\n  \"reachable\": false,\n  \"reason\": \"starting\"\n}\n");
  EXPECT_EQ(Err(),
            "The service has no pipe yet; waiting.\n"
            "The service's process runs, but it has had no pipe for a minute.\n"
            "  What to do: restart the service, or end the process TavrinService.exe; "
            "tavrin-service.log tells how far it came.\n");
}

TEST_F(AskingTest, HalfAReplyIsSaid) {
  unit::ScriptedService service(machine);
  service.SendsBytesAfter(20, std::string("\x10\0\0\0{", 5));
  EXPECT_EQ(Run({L"disconnect"}), 2);
  EXPECT_EQ(Err(),
            "The reply broke off in the middle.\n"
            "  What to do: run tavrinctl status to see how things stand; if it stays so, restart "
            "the service.\n");
}

}  // namespace
}  // namespace vpn
