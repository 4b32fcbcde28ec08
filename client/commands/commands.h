// One function a command. Each gives the exit code.
#ifndef TAVRIN_CLIENT_COMMANDS_COMMANDS_H_
#define TAVRIN_CLIENT_COMMANDS_COMMANDS_H_

#include <string>
#include <vector>

#include "client/cli/command_line.h"
#include "client/console/output.h"

namespace vpn {

int RunStatus(const CommandLine& line, Screen& screen);
int RunConnect(const CommandLine& line, Screen& screen);
int RunDisconnect(const CommandLine& line, Screen& screen);
int RunShutdown(const CommandLine& line, Screen& screen);
int RunRequest(const CommandLine& line, Screen& screen);
int RunNodes(const CommandLine& line, Screen& screen);
int RunTrace(const CommandLine& line, Screen& screen);
int RunDoctor(const CommandLine& line, Screen& screen);
int RunReport(const CommandLine& line, Screen& screen);
int RunLogin(const CommandLine& line, Screen& screen);
int RunLogout(const CommandLine& line, Screen& screen);
int RunAccount(const CommandLine& line, Screen& screen);
int RunRegister(const CommandLine& line, Screen& screen);
int RunResetPassword(const CommandLine& line, Screen& screen);
int RunPlans(const CommandLine& line, Screen& screen);
int RunBuy(const CommandLine& line, Screen& screen);
int RunOrder(const CommandLine& line, Screen& screen);
int RunInvite(const CommandLine& line, Screen& screen);
int RunReferrals(const CommandLine& line, Screen& screen);
int RunDevice(const CommandLine& line, Screen& screen);

// The whole program: `arguments` without its name.
int RunClient(const std::vector<std::wstring>& arguments);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_COMMANDS_COMMANDS_H_
