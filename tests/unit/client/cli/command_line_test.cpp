#include "client/cli/command_line.h"

#include "client/cli/command_help.h"
#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

using Kind = ParsedLine::Kind;

class CommandLineTest : public unit::ClientTest {};

TEST_F(CommandLineTest, AConnectWithEverything) {
  const ParsedLine parsed =
      ParseCommandLine({L"connect", L"香港 BGP 02", L"--timeout", L"30", L"--force", L"--json",
                        L"--quiet", L"--runtime", L"D:\\run"});
  ASSERT_EQ(parsed.kind, Kind::kRun);
  EXPECT_EQ(parsed.line.command, "connect");
  EXPECT_EQ(parsed.line.node, L"香港 BGP 02");
  EXPECT_EQ(parsed.line.timeout, 30u);
  EXPECT_EQ(parsed.line.runtimeDir, L"D:\\run");
  EXPECT_TRUE(parsed.line.force && parsed.line.json && parsed.line.quiet);
}

TEST_F(CommandLineTest, OptionsOfTheOtherCommands) {
  EXPECT_TRUE(ParseCommandLine({L"status", L"--watch"}).line.watch);
  EXPECT_TRUE(ParseCommandLine({L"nodes", L"--latency"}).line.latency);
  const ParsedLine trace = ParseCommandLine({L"trace", L"--last", L"3", L"--html", L"页.html"});
  EXPECT_EQ(trace.line.last, 3u);
  EXPECT_EQ(trace.line.file, L"页.html");
  EXPECT_EQ(ParseCommandLine({L"request", L"{\"op\":\"status\"}"}).line.text,
            L"{\"op\":\"status\"}");
}

TEST_F(CommandLineTest, OptionsOfTheAccountsCommands) {
  const CommandLine buy = ParseCommandLine({L"buy", L"标准版", L"month_price", L"--yes"}).line;
  EXPECT_EQ(buy.plan, L"标准版");
  EXPECT_EQ(buy.period, L"month_price");
  EXPECT_TRUE(buy.yes);
  const CommandLine line =
      ParseCommandLine({L"register", L"me@mail.example", L"--invite", L"X", L"--password-stdin"})
          .line;
  EXPECT_EQ(line.email, L"me@mail.example");
  EXPECT_EQ(line.inviteCode, L"X");
  EXPECT_TRUE(line.passwordStdin);
  const CommandLine order = ParseCommandLine({L"order", L"2026", L"--wait"}).line;
  EXPECT_EQ(order.tradeNo, L"2026");
  EXPECT_TRUE(order.wait);
  EXPECT_EQ(ParseCommandLine({L"referrals", L"--page", L"3"}).line.page, 3u);
  EXPECT_EQ(ParseCommandLine({L"referrals"}).line.page, 1u);
}

TEST_F(CommandLineTest, APasswordIsNeverTakenFromTheCommandLine) {
  for (const wchar_t* command : {L"login", L"register", L"reset-password"}) {
    EXPECT_EQ(ParseCommandLine({command, L"me@mail.example", L"secret"}).kind, Kind::kWrong);
    EXPECT_EQ(ParseCommandLine({command, L"me@mail.example", L"--password", L"secret"}).kind,
              Kind::kWrong);
    EXPECT_EQ(ParseCommandLine({command}).kind, Kind::kWrong);
  }
}

TEST_F(CommandLineTest, WrongLinesSayWhatIsWrong) {
  for (const auto& [arguments, text] :
       std::vector<std::pair<std::vector<std::wstring>, std::wstring>>{
           {{L"conect"},
            L"tavrinctl: no command is called conect\nUsage: tavrinctl COMMAND [OPTION...]\nSee: "
            L"tavrinctl help\n"},
           {{L"status", L"--frob"},
            L"tavrinctl: The following argument was not expected: --frob\n"
            L"Usage: tavrinctl status [OPTION...]\n"
            L"See: tavrinctl help status\n"},
           {{L"request"},
            L"tavrinctl: TEXT is required\nUsage: tavrinctl request TEXT\nSee: tavrinctl help "
            L"request\n"},
           {{L"connect", L"a", L"b"},
            L"tavrinctl: The following argument was not expected: b\n"
            L"Usage: tavrinctl connect [NODE] [OPTION...]\n"
            L"See: tavrinctl help connect\n"},
           {{L"disconnect", L"status"},
            L"tavrinctl: The following argument was not expected: status\n"
            L"Usage: tavrinctl disconnect [OPTION...]\n"
            L"See: tavrinctl help disconnect\n"},
           {{L"help", L"frob"},
            L"tavrinctl: no command is called frob\nUsage: tavrinctl COMMAND [OPTION...]\nSee: "
            L"tavrinctl help\n"}}) {
    const ParsedLine parsed = ParseCommandLine(arguments);
    EXPECT_EQ(parsed.kind, Kind::kWrong);
    EXPECT_EQ(parsed.text, text);
  }
}

TEST_F(CommandLineTest, ANodeMayBeCalledLikeACommand) {
  const ParsedLine parsed = ParseCommandLine({L"connect", L"status"});
  EXPECT_EQ(parsed.kind, Kind::kRun);
  EXPECT_EQ(parsed.line.command, "connect");
  EXPECT_EQ(parsed.line.node, L"status");
}

TEST_F(CommandLineTest, NumbersHaveTheirRange) {
  for (const wchar_t* value : {L"0", L"-1", L"soon", L"", L"86401"}) {
    EXPECT_EQ(ParseCommandLine({L"connect", L"--timeout", value}).kind, Kind::kWrong) << value;
  }
  EXPECT_EQ(ParseCommandLine({L"trace", L"--last", L"0"}).kind, Kind::kWrong);
  EXPECT_EQ(ParseCommandLine({L"completion", L"fish"}).kind, Kind::kWrong);
}

TEST_F(CommandLineTest, NoArgumentShowsAllCommandsWithOneLineEach) {
  const ParsedLine parsed = ParseCommandLine({});
  ASSERT_EQ(parsed.kind, Kind::kShow);
  for (const CommandHelp& command : AllCommands()) {
    EXPECT_NE(
        parsed.text.find(
            L"\n  " + std::wstring(command.name, command.name + std::string(command.name).size())),
        std::wstring::npos)
        << command.name;
  }
  EXPECT_EQ(ParseCommandLine({L"help"}).text, parsed.text);
  EXPECT_EQ(ParseCommandLine({L"--help"}).text, parsed.text);
}

TEST_F(CommandLineTest, HelpHasTheOptionsAndExamples) {
  EXPECT_EQ(ParseCommandLine({L"help", L"nodes"}).text,
            L"Usage: tavrinctl nodes [OPTION...]\n"
            L"\n"
            L"  the account's nodes\n"
            L"\n"
            L"Options:\n"
            L"  --latency         measure the time of a TCP connect to each, 2 s at most\n"
            L"  --json            print one JSON object\n"
            L"  --runtime DIR     the service's runtime directory, when it is not found by itself\n"
            L"\n"
            L"With a tunnel up the way leads past it for the running node alone.\n"
            L"\n"
            L"Examples:\n"
            L"  tavrinctl nodes\n"
            L"  tavrinctl nodes --latency\n");
  EXPECT_EQ(ParseCommandLine({L"nodes", L"-h"}).text, ParseCommandLine({L"help", L"nodes"}).text);
}

TEST_F(CommandLineTest, TheVersionIsThatOfThePackage) {
  EXPECT_EQ(ParseCommandLine({L"--version"}).text, L"tavrinctl 0.1.0\n");
}

TEST_F(CommandLineTest, TheVersionAsJsonHasWhatTheBuildWasGiven) {
  const ParsedLine parsed = ParseCommandLine({L"--version", L"--json"});
  EXPECT_EQ(parsed.kind, Kind::kShow);
  EXPECT_EQ(parsed.text,
            L"{\n"
            L"  \"schema\": 1,\n"
            L"  \"version\": \"0.1.0\",\n"
            L"  \"panelDomain\": \"panel.example\",\n"
            L"  \"defaultNodeAddress\": \"203.0.113.10\",\n"
            L"  \"paymentNotifyUrl\": \"https://api.panel.example\",\n"
            L"  \"proxyDomains\": [\n"
            L"    \"google.com\",\n"
            L"    \"anthropic.com\",\n"
            L"    \"claude.ai\",\n"
            L"    \"claude.com\",\n"
            L"    \"cursor.com\",\n"
            L"    \"cursor.sh\",\n"
            L"    \"cursorapi.com\"\n"
            L"  ]\n"
            L"}\n");
}

TEST_F(CommandLineTest, JsonBelongsToTheVersionOrToACommand) {
  for (const auto& [arguments, text] :
       std::vector<std::pair<std::vector<std::wstring>, std::wstring>>{
           {{L"--json"},
            L"tavrinctl: --json requires --version\n"
            L"Usage: tavrinctl COMMAND [OPTION...]\n"
            L"See: tavrinctl help\n"},
           {{L"report", L"a.md", L"--json"},
            L"tavrinctl: The following argument was not expected: --json\n"
            L"Usage: tavrinctl report FILE [OPTION...]\n"
            L"See: tavrinctl help report\n"}}) {
    const ParsedLine parsed = ParseCommandLine(arguments);
    EXPECT_EQ(parsed.kind, Kind::kWrong);
    EXPECT_EQ(parsed.text, text);
  }
}

TEST_F(CommandLineTest, EveryOptionOfTheHelpIsTaken) {
  for (const CommandHelp& command : AllCommands()) {
    for (const OptionHelp& option : command.options) {
      const std::string word = option.name;
      const size_t blank = word.find(' ');
      std::vector<std::wstring> arguments = {
          std::wstring(command.name, command.name + std::string(command.name).size())};
      arguments.emplace_back(
          word.begin(), word.begin() + static_cast<std::ptrdiff_t>(std::min(blank, word.size())));
      if (blank != std::string::npos) {
        arguments.emplace_back(L"7");
      }
      for (const char* wanted : {"EMAIL", "PLAN", "PERIOD", "TRADE_NO", "FILE"}) {
        if (std::string(command.usage).find(wanted) != std::string::npos) {
          arguments.emplace_back(L"x");
        }
      }
      EXPECT_EQ(ParseCommandLine(arguments).kind, Kind::kRun) << command.name << " " << word;
    }
  }
}

TEST_F(CommandLineTest, TheCompletionKnowsCommandsAndOptions) {
  const std::wstring script = ParseCommandLine({L"completion", L"powershell"}).text;
  EXPECT_EQ(script.find(L"Register-ArgumentCompleter -Native -CommandName tavrinctl"), 0u);
  EXPECT_NE(script.find(L"'connect' = @('--timeout', '--force', '--quiet', '--json', "
                        L"'--runtime')\n"),
            std::wstring::npos);
}

}  // namespace
}  // namespace vpn
