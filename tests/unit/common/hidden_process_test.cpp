#include "src/common/hidden_process.h"

#include <string>
#include <vector>

#include "tests/unit/product_state.h"

namespace unit {
namespace {

using Texts = std::vector<std::string>;

class HiddenProcesses : public ProductTest {
 protected:
  HiddenProcesses() {
    machine.files.Put(L"C:\\Windows\\System32\\tool.exe");
    machine.programs.On(L"tool.exe", sim::Script().Exits(0, 40));
  }
};

TEST_F(HiddenProcesses, AHiddenProcessOwnsBothItsHandlesAndClosesTheThreadFirst) {
  {
    vpn::HiddenProcess child;
    EXPECT_TRUE(
        child.create(L"C:\\Windows\\System32\\tool.exe", L"tool x", 0x08000004, L"C:\\Windows"));
    EXPECT_EQ(machine.calls.TextsOf("CreateProcessW"),
              Texts{"\"C:\\Windows\\System32\\tool.exe\", \"tool x\", own, 0x8000004, "
                    "\"C:\\Windows\", 1, 0"});
    EXPECT_EQ(machine.OpenHandles(), (Texts{"process tool.exe from CreateProcessW",
                                            "thread of tool.exe from CreateProcessW"}));
    machine.processes.Exit(machine.processes.Started().at(0)->id, 0);
  }
  EXPECT_EQ(machine.calls.TextsOf("CloseHandle"),
            (Texts{"thread of tool.exe", "process tool.exe"}));
}

TEST_F(HiddenProcesses, AHiddenProcessThatCantStartHoldsNothing) {
  vpn::HiddenProcess child;
  EXPECT_FALSE(child.create(L"C:\\nowhere.exe", L"x", 0, nullptr));
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_FALSE(child.process);
  EXPECT_FALSE(child.thread);
}

}  // namespace
}  // namespace unit
