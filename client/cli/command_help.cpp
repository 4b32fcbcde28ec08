#include "client/cli/command_help.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "client/text/display_width.h"
#include "src/common/text.h"

namespace vpn {
namespace {

constexpr OptionHelp kJson = {"--json", "print one JSON object"};
constexpr OptionHelp kRuntime = {"--runtime DIR",
                                 "the service's runtime directory, when it is not found by itself"};

constexpr OptionHelp kPassword = {"--password-stdin",
                                  "take the password from the standard input, not the keyboard"};

std::wstring Indented(const char* left, size_t width, const char* right) {
  return L"  " + PadRight(Utf8ToWide(left), width) + L"  " + Utf8ToWide(right) + L"\n";
}

// "--timeout" of "--timeout S".
std::string OptionWord(const OptionHelp& option) {
  const std::string_view name = option.name;
  return std::string(name.substr(0, name.find(' ')));
}

std::wstring Quoted(const std::string& word) {
  return L"'" + Utf8ToWide(word) + L"'";
}

const std::vector<CommandHelp> kCommands = {
    {"status",
     "[OPTION...]",
     "is the tunnel up, since when, and through which node",
     {{"--watch", "stay, and look again every second"}, kJson, kRuntime},
     {},
     {"tavrinctl status", "tavrinctl status --json"}},
    {"connect",
     "[NODE] [OPTION...]",
     "connect to a node, the account's first one if none is named, and show each step",
     {{"--timeout S", "wait so many seconds for the reply"},
      {"--force", "send the node's name without looking it up"},
      {"--quiet", "print nothing but errors"},
      kJson,
      kRuntime},
     {"Ctrl+C ends this program; the service goes on with the connect."},
     {"tavrinctl connect", "tavrinctl connect \"Tokyo 01\" --timeout 30"}},
    {"disconnect", "[OPTION...]", "end the tunnel", {kJson}, {}, {"tavrinctl disconnect"}},
    {"shutdown",
     "[OPTION...]",
     "end the tunnel, and the service's process unless it runs as a Windows service",
     {kJson},
     {},
     {"tavrinctl shutdown"}},
    {"request",
     "TEXT",
     "send TEXT to the service byte for byte and print its reply",
     {},
     {},
     {"tavrinctl request '{\"op\":\"status\"}'"}},
    {"nodes",
     "[OPTION...]",
     "the account's nodes",
     {{"--latency", "measure the time of a TCP connect to each, 2 s at most"}, kJson, kRuntime},
     {"With a tunnel up the way leads past it for the running node alone."},
     {"tavrinctl nodes", "tavrinctl nodes --latency"}},
    {"trace",
     "[OPTION...]",
     "what the connects in the trace file did, and how long each step took",
     {{"--last N", "the last N connects; 1 by default, in a page all of them"},
      {"--html FILE", "write a page with all of them instead"},
      kJson,
      kRuntime},
     {},
     {"tavrinctl trace", "tavrinctl trace --last 3", "tavrinctl trace --html connects.html"}},
    {"doctor",
     "[OPTION...]",
     "is this machine ready? Checks that change nothing, and what to do about each finding",
     {kJson, kRuntime},
     {"Run it with administrator's rights to see the settings of the service's own account."},
     {"tavrinctl doctor", "tavrinctl doctor --json"}},
    {"report",
     "FILE [OPTION...]",
     "one Markdown file for support, without a secret in it",
     {kRuntime},
     {"It holds versions, the doctor's findings, the last 200 lines of the log, the last 20",
      "connects, and the shape of the generated configuration with all values masked."},
     {"tavrinctl report tavrin.md"}},
    {"login",
     "EMAIL [OPTION...]",
     "sign in; the old session stands until the new one is proven",
     {kPassword, kJson, kRuntime},
     {},
     {"tavrinctl login someone@mail.example"}},
    {"logout",
     "[OPTION...]",
     "forget the session; a tunnel that is up stays up",
     {kJson, kRuntime},
     {},
     {"tavrinctl logout"}},
    {"account",
     "[OPTION...]",
     "plan, expiry, traffic and devices of the account",
     {kJson, kRuntime},
     {},
     {"tavrinctl account", "tavrinctl account --json"}},
    {"register",
     "EMAIL [OPTION...]",
     "make an account on the panel, and sign in",
     {{"--invite CODE", "the code of whoever invites you"}, kPassword, kJson, kRuntime},
     {"With --password-stdin the second line is the code from the mail, if the panel mails one."},
     {"tavrinctl register someone@mail.example --invite Xk3q9ZtB"}},
    {"reset-password",
     "EMAIL [OPTION...]",
     "set a new password with a code from a mail, and sign in",
     {kPassword, kJson, kRuntime},
     {"With --password-stdin the second line is the code from the mail."},
     {"tavrinctl reset-password someone@mail.example"}},
    {"plans", "[OPTION...]", "what the panel sells", {kJson, kRuntime}, {}, {"tavrinctl plans"}},
    {"buy",
     "PLAN PERIOD [OPTION...]",
     "order a plan, by its number or name, for a period that plans shows",
     {{"--yes", "buy without a question"}, kJson, kRuntime},
     {"A panel takes one open order: buying cancels the open ones, which are shown first."},
     {"tavrinctl buy 2 month_price", "tavrinctl buy 2 month --yes"}},
    {"order",
     "TRADE_NO [OPTION...]",
     "is an order paid? Exit code 1 when it is not",
     {{"--wait", "wait until it is, 15 minutes at most"}, kJson, kRuntime},
     {},
     {"tavrinctl order 2026112200010000 --wait"}},
    {"invite",
     "[OPTION...]",
     "your invite code and link, and what they have earned",
     {kJson, kRuntime},
     {},
     {"tavrinctl invite"}},
    {"referrals",
     "[OPTION...]",
     "who came by your invitation",
     {{"--page N", "the page N of the list"}, kJson, kRuntime},
     {},
     {"tavrinctl referrals --page 2"}},
    {"device",
     "[OPTION...]",
     "count this computer among the devices of the plan",
     {kJson, kRuntime},
     {"It is known by a random number in device.id, not by anything of the machine."},
     {"tavrinctl device"}},
    {"help", "[COMMAND]", "what a command does, with examples", {}, {}, {"tavrinctl help connect"}},
    {"completion",
     "powershell",
     "a script that completes commands and options in PowerShell",
     {},
     {},
     {"tavrinctl completion powershell >> $PROFILE"}},
};

}  // namespace

const std::vector<CommandHelp>& AllCommands() {
  return kCommands;
}

const CommandHelp* FindCommandHelp(const std::string& name) {
  const std::vector<CommandHelp>& commands = AllCommands();
  const auto found =
      std::find_if(commands.begin(), commands.end(),
                   [&name](const CommandHelp& command) { return name == command.name; });
  return found == commands.end() ? nullptr : &*found;
}

std::wstring UsageText(const std::string& name) {
  const CommandHelp* const command = FindCommandHelp(name);
  const std::string words = command == nullptr ? "COMMAND [OPTION...]"
                                               : std::string(command->name) + " " + command->usage;
  return L"Usage: tavrinctl " + Utf8ToWide(words) + L"\n";
}

std::wstring OverviewText() {
  std::wstring text = L"tavrinctl drives the Tavrin service and shows what a connect does.\n\n" +
                      UsageText("") + L"\n";
  for (const CommandHelp& command : AllCommands()) {
    text += Indented(command.name, 14, command.summary);
  }
  return text +
         L"\n  tavrinctl help COMMAND    more about one of them\n"
         L"  tavrinctl --version       this program's version, with --json its constants\n\n"
         L"Exit codes: 0 done, 1 refused or a problem found, 2 service not reached,\n"
         L"3 wrong command line, 130 interrupted.\n";
}

std::wstring CommandHelpText(const CommandHelp& command) {
  std::wstring text = UsageText(command.name) + L"\n  " + Utf8ToWide(command.summary) + L"\n";
  text += command.options.empty() ? L"" : L"\nOptions:\n";
  for (const OptionHelp& option : command.options) {
    text += Indented(option.name, 16, option.meaning);
  }
  text += command.notes.empty() ? L"" : L"\n";
  for (const char* note : command.notes) {
    text += Utf8ToWide(note) + L"\n";
  }
  text += L"\nExamples:\n";
  for (const char* example : command.examples) {
    text += L"  " + Utf8ToWide(example) + L"\n";
  }
  return text;
}

std::wstring PowerShellCompletion() {
  std::wstring text =
      L"Register-ArgumentCompleter -Native -CommandName tavrinctl -ScriptBlock {\n"
      L"    param($word, $ast, $position)\n"
      L"    $options = @{\n";
  for (const CommandHelp& command : AllCommands()) {
    text += L"        " + Quoted(command.name) + L" = @(";
    for (size_t at = 0; at < command.options.size(); ++at) {
      text += (at == 0 ? L"" : L", ") + Quoted(OptionWord(command.options[at]));
    }
    text += L")\n";
  }
  return text +
         L"    }\n"
         L"    $words = @($ast.CommandElements | Select-Object -Skip 1 | ForEach-Object { \"$_\" "
         L"})\n"
         L"    $command = $words | Where-Object { $options.ContainsKey($_) } | Select-Object "
         L"-First 1\n"
         L"    $choices = if ($command -and $command -ne $word) { $options[$command] }"
         L" else { $options.Keys | Sort-Object }\n"
         L"    $choices | Where-Object { $_ -like \"$word*\" } | ForEach-Object {\n"
         L"        [System.Management.Automation.CompletionResult]::new($_)\n"
         L"    }\n"
         L"}\n";
}

}  // namespace vpn
