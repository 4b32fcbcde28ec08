#include <iterator>
#include <string_view>

#include "client/commands/commands.h"
#include "client/console/interrupt.h"
#include "client/exit_codes.h"

namespace vpn {
namespace {

struct Entry {
  std::string_view name;
  int (*run)(const CommandLine& line, Screen& screen);
};

constexpr Entry kCommands[] = {
    {"status", RunStatus},         {"connect", RunConnect},
    {"disconnect", RunDisconnect}, {"shutdown", RunShutdown},
    {"request", RunRequest},       {"nodes", RunNodes},
    {"trace", RunTrace},           {"doctor", RunDoctor},
    {"report", RunReport},         {"login", RunLogin},
    {"logout", RunLogout},         {"account", RunAccount},
    {"register", RunRegister},     {"reset-password", RunResetPassword},
    {"plans", RunPlans},           {"buy", RunBuy},
    {"order", RunOrder},           {"invite", RunInvite},
    {"referrals", RunReferrals},   {"device", RunDevice},
};

}  // namespace

int RunClient(const std::vector<std::wstring>& arguments) {
  const InterruptGuard guard;
  Screen screen;
  const ParsedLine parsed = ParseCommandLine(arguments);
  if (parsed.kind == ParsedLine::Kind::kWrong) {
    screen.err.write(parsed.text);
    return kExitUsage;
  }
  for (const Entry& entry : kCommands) {
    if (entry.name == parsed.line.command) {
      return entry.run(parsed.line, screen);
    }
  }
  screen.out.write(parsed.text);  // no command, but a text to show
  return kExitDone;
}

}  // namespace vpn
