#include "client/cli/command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>

#include "client/cli/command_help.h"
#include "client/cli/version_text.h"
#include "src/common/text.h"

namespace vpn {
namespace {

// What CLI11 fills, in its own narrow text.
struct Values {
  CommandLine line;
  std::string runtime;
  std::string node;
  std::string text;
  std::string file;
  std::string shell;
  std::string email;
  std::string inviteCode;
  std::string plan;
  std::string period;
  std::string tradeNo;
  bool version = false;
};

void AddStatus(CLI::App& command, Values& values) {
  command.add_flag("--watch", values.line.watch);
}

void AddConnect(CLI::App& command, Values& values) {
  command.add_option("NODE", values.node);
  command.add_option("--timeout", values.line.timeout)->check(CLI::Range(1, 86400));
  command.add_flag("--force", values.line.force);
  command.add_flag("--quiet", values.line.quiet);
}

void AddTrace(CLI::App& command, Values& values) {
  command.add_option("--last", values.line.last)->check(CLI::Range(1, 100000));
  command.add_option("--html", values.file);
}

// False for a command that is none of the account's, or takes nothing of its own.
bool AddAccountOptions(CLI::App& command, const std::string& name, Values& values) {
  if (name == "login" || name == "register" || name == "reset-password") {
    command.add_option("EMAIL", values.email)->required();
    command.add_flag("--password-stdin", values.line.passwordStdin);
    if (name == "register") {
      command.add_option("--invite", values.inviteCode);
    }
  } else if (name == "buy") {
    command.add_option("PLAN", values.plan)->required();
    command.add_option("PERIOD", values.period)->required();
    command.add_flag("--yes", values.line.yes);
  } else if (name == "order") {
    command.add_option("TRADE_NO", values.tradeNo)->required();
    command.add_flag("--wait", values.line.wait);
  } else if (name == "referrals") {
    command.add_option("--page", values.line.page)->check(CLI::Range(1, 100000));
  } else {
    return false;
  }
  return true;
}

void AddOptions(CLI::App& command, const std::string& name, Values& values) {
  if (AddAccountOptions(command, name, values)) {
    return;
  }
  if (name == "status") {
    AddStatus(command, values);
  } else if (name == "connect") {
    AddConnect(command, values);
  } else if (name == "trace") {
    AddTrace(command, values);
  } else if (name == "nodes") {
    command.add_flag("--latency", values.line.latency);
  } else if (name == "request") {
    command.add_option("TEXT", values.text)->required();
  } else if (name == "report") {
    command.add_option("FILE", values.file)->required();
  } else if (name == "completion") {
    command.add_option("SHELL", values.shell)->required()->check(CLI::IsMember({"powershell"}));
  }
}

// Every command of the help, with the options that the help names.
void AddCommands(CLI::App& app, Values& values) {
  app.set_help_flag();
  app.allow_windows_style_options(false);  // a word that begins with a slash is a word
  app.require_subcommand(0, 1);            // a node may be called like a command
  CLI::Option* const version = app.add_flag("--version", values.version);
  app.add_flag("--json", values.line.json)->needs(version);
  for (const CommandHelp& help : AllCommands()) {
    CLI::App* const command = app.add_subcommand(help.name);
    command->set_help_flag();
    for (const OptionHelp& option : help.options) {
      if (option.name == std::string("--json")) {
        command->add_flag("--json", values.line.json);
      } else if (option.name == std::string("--runtime DIR")) {
        command->add_option("--runtime", values.runtime);
      }
    }
    AddOptions(*command, help.name, values);
  }
}

ParsedLine Show(std::wstring text) {
  return {ParsedLine::Kind::kShow, {}, std::move(text)};
}

ParsedLine Wrong(const std::wstring& text, const std::string& command) {
  const std::wstring more = command.empty() ? L"" : L" " + Utf8ToWide(command);
  return {
      ParsedLine::Kind::kWrong,
      {},
      L"tavrinctl: " + text + L"\n" + UsageText(command) + L"See: tavrinctl help" + more + L"\n"};
}

ParsedLine HelpAbout(const std::string& topic) {
  if (topic.empty()) {
    return Show(OverviewText());
  }
  const CommandHelp* const help = FindCommandHelp(topic);
  return help == nullptr ? Wrong(L"no command is called " + Utf8ToWide(topic), "")
                         : Show(CommandHelpText(*help));
}

ParsedLine Finish(const std::string& command, Values& values) {
  if (values.version) {
    return Show(VersionText(values.line.json));
  }
  if (command.empty()) {
    return Show(OverviewText());
  }
  if (command == "completion") {
    return Show(PowerShellCompletion());
  }
  values.line.command = command;
  values.line.runtimeDir = Utf8ToWide(values.runtime);
  values.line.node = Utf8ToWide(values.node);
  values.line.text = Utf8ToWide(values.text);
  values.line.file = Utf8ToWide(values.file);
  values.line.email = Utf8ToWide(values.email);
  values.line.inviteCode = Utf8ToWide(values.inviteCode);
  values.line.plan = Utf8ToWide(values.plan);
  values.line.period = Utf8ToWide(values.period);
  values.line.tradeNo = Utf8ToWide(values.tradeNo);
  return {ParsedLine::Kind::kRun, std::move(values.line), {}};
}

bool AsksForHelp(const std::vector<std::wstring>& arguments) {
  return std::any_of(arguments.begin(), arguments.end(), [](const std::wstring& argument) {
    return argument == L"--help" || argument == L"-h" || argument == L"/?";
  });
}

}  // namespace

ParsedLine ParseCommandLine(const std::vector<std::wstring>& arguments) {
  const std::string first = arguments.empty() ? "" : WideToUtf8(arguments.front());
  const std::string named = FindCommandHelp(first) == nullptr ? "" : first;
  if (AsksForHelp(arguments)) {
    return HelpAbout(named);
  }
  if (first == "help" && arguments.size() <= 2) {
    return HelpAbout(arguments.size() == 2 ? WideToUtf8(arguments[1]) : "");
  }
  if (!first.empty() && named.empty() && !first.starts_with('-')) {
    return Wrong(L"no command is called " + arguments.front(), "");
  }
  Values values;
  CLI::App app;
  AddCommands(app, values);
  std::vector<std::string> reversed;  // as CLI11 takes them
  std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(reversed), WideToUtf8);
  try {
    app.parse(std::move(reversed));
  } catch (const CLI::ParseError& error) {
    return Wrong(Utf8ToWide(error.what()), named);
  }
  return Finish(named, values);
}

}  // namespace vpn
