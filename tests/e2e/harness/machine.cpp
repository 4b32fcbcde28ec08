#include "tests/e2e/harness/machine.h"

#include <regex>

#include "tests/standins/files.h"
#include "tests/standins/shared_machine.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr char kPollForSize[] = "GetAdaptersAddresses(family 0, flags 0, for the size) = 111";
constexpr char kPollForList[] = "GetAdaptersAddresses(family 0, flags 0, into a buffer) = 0";

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

bool IsPoll(const std::string& line) {
  return line == kPollForSize || line == kPollForList;
}

bool IsStartOf(const std::string& line, const std::string& image) {
  return line.rfind(image + " [", 0) == 0;
}

}  // namespace

standins::MachineState Machine::State() const {
  return standins::SharedMachine(directory_).state();
}

void Machine::Edit(const std::function<void(standins::MachineState&)>& change) const {
  standins::SharedMachine machine(directory_);
  change(machine.state());
}

std::vector<std::string> Machine::Calls() const {
  static const std::regex pid(" \\[[0-9]+\\] in ");
  std::vector<std::string> lines = standins::ReadCallLog(directory_);
  for (std::string& line : lines) {
    ReplaceAll(line, standins::ToUtf8(root_), "<box>");
    line = std::regex_replace(line, pid, " [pid] in ");
  }
  return lines;
}

// A listing caught between the adapter's changes may also find the size out of date; it counts as
// a poll like the others.
std::vector<std::string> Machine::CallsWithOnePoll() const {
  std::vector<std::string> result;
  bool polling = false;  // between the start of Xray and what follows the polls
  for (const std::string& line : Calls()) {
    const bool staleSize = polling && line.rfind("GetAdaptersAddresses(family 0, ", 0) == 0;
    if (polling && (IsPoll(line) || staleSize)) continue;
    polling =
        polling ? IsStartOf(line, "tun2socks-windows-amd64.exe") : IsStartOf(line, "xray.exe");
    result.push_back(line);
    if (IsStartOf(line, "tun2socks-windows-amd64.exe")) {
      result.push_back(kPollForSize);
      result.push_back(kPollForList);
    }
  }
  return result;
}

void Machine::ForgetCalls() const {
  const standins::SharedMachine turn(directory_);
  standins::ReplaceWholeFile(directory_ + L"\\calls.log", "");
}

std::size_t Machine::Starts(const std::string& image) const {
  std::size_t count = 0;
  for (const std::string& line : standins::ReadCallLog(directory_)) {
    if (IsStartOf(line, image)) ++count;
  }
  return count;
}

HANDLE Machine::OpenLast(const std::string& image, DWORD furtherAccess) const {
  DWORD pid = 0;
  for (const std::string& line : standins::ReadCallLog(directory_)) {
    if (IsStartOf(line, image)) pid = std::stoul(line.substr(image.size() + 2));
  }
  return OpenProcess(
      SYNCHRONIZE | PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION | furtherAccess, FALSE,
      pid);
}

std::vector<std::string> RouteTexts(const netmodel::Network& network) {
  std::vector<std::string> texts;
  for (const netmodel::Route& route : network.routes) {
    const netmodel::Adapter* adapter = network.FindByLuid(route.luid);
    texts.push_back(
        netmodel::FormatIpv4(route.destination) + "/" + std::to_string(route.prefixLength) +
        " via " + netmodel::FormatIpv4(route.nextHop) + " metric " + std::to_string(route.metric) +
        " on " + (adapter != nullptr ? adapter->friendlyName : "nothing"));
  }
  return texts;
}

}  // namespace e2e
