// What help says of each command.
#ifndef TAVRIN_CLIENT_CLI_COMMAND_HELP_H_
#define TAVRIN_CLIENT_CLI_COMMAND_HELP_H_

#include <string>
#include <vector>

namespace vpn {

struct OptionHelp {
  const char* name;  // as it is written: "--timeout S"
  const char* meaning;
};

struct CommandHelp {
  const char* name;
  const char* usage;    // behind the name: "[NODE] [OPTION...]"
  const char* summary;  // one line
  std::vector<OptionHelp> options;
  std::vector<const char*> notes;     // whole lines
  std::vector<const char*> examples;  // command lines
};

const std::vector<CommandHelp>& AllCommands();

// Null for a name that is no command.
const CommandHelp* FindCommandHelp(const std::string& name);

// "Usage: tavrinctl NAME …" with a line feed; of the whole program for a name that is no command.
std::wstring UsageText(const std::string& name);

// All commands with one line each.
std::wstring OverviewText();

std::wstring CommandHelpText(const CommandHelp& command);

// A script for PowerShell's profile that completes commands and options.
std::wstring PowerShellCompletion();

}  // namespace vpn

#endif  // TAVRIN_CLIENT_CLI_COMMAND_HELP_H_
