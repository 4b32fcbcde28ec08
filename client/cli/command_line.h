// The command line, read into plain values.
#ifndef TAVRIN_CLIENT_CLI_COMMAND_LINE_H_
#define TAVRIN_CLIENT_CLI_COMMAND_LINE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace vpn {

struct CommandLine {
  std::string command;      // "status"; empty when only a text is to be shown
  std::wstring runtimeDir;  // --runtime, possibly empty
  bool json = false;
  bool watch = false;
  bool force = false;
  bool quiet = false;
  bool latency = false;
  bool yes = false;
  bool wait = false;
  bool passwordStdin = false;
  std::uint32_t timeout = 0;  // seconds, 0 for none
  std::uint32_t last = 0;     // connects, 0 for all
  std::wstring node;
  std::wstring text;  // of a request
  std::uint32_t page = 1;
  std::wstring email;
  std::wstring inviteCode;
  std::wstring plan;  // its number or name
  std::wstring period;
  std::wstring tradeNo;
  std::wstring file;  // a report's, or a page's
};

struct ParsedLine {
  enum class Kind { kRun, kShow, kWrong };
  Kind kind = Kind::kWrong;
  CommandLine line;   // for kRun
  std::wstring text;  // what to show, or what is wrong
};

// `arguments` without the program's name.
ParsedLine ParseCommandLine(const std::vector<std::wstring>& arguments);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_CLI_COMMAND_LINE_H_
