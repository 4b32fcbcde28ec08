#include "tests/sequence/observation.h"

#include <algorithm>

#include "tests/fault/network_lines.h"
#include "tests/sim/path.h"
#include "tests/sim/text.h"

namespace sequence {
namespace {

constexpr wchar_t kLog[] = L"C:\\run\\tavrin-service.log";
constexpr wchar_t kTrace[] = L"C:\\Program Files\\Tavrin\\connect-timing.log";
constexpr wchar_t kConfig[] = L"C:\\run\\session.json.xray.json";

Lines SplitLines(const std::string& text) {
  Lines lines;
  for (size_t at = 0; at < text.size();) {
    const size_t end = text.find('\n', at);
    lines.push_back(end == std::string::npos ? text.substr(at) + " (no end of line)"
                                             : text.substr(at, end - at));
    at = end == std::string::npos ? text.size() : end + 1;
  }
  return lines;
}

// What was appended; everything when the file was begun anew.
std::string Since(const std::string& before, const std::string& now) {
  return now.starts_with(before) ? now.substr(before.size()) : now;
}

std::string ActOf(const sim::CallRecord& record) {
  const std::string& text = record.text;
  const auto from = [&](const char* mark) { return text.substr(text.find(mark)); };
  if (record.name == "CreateProcessW" && text.starts_with("null, ")) {
    const std::string line = from("netsh");
    return line.substr(0, line.find("\", own"));
  }
  if (record.name == "CreateProcessW") {
    const std::string path = text.substr(1, text.find('"', 1) - 1);
    return "start " + path.substr(path.rfind('\\') + 1);
  }
  if (record.name == "TerminateProcess") {
    return "end " + text.substr(8, text.rfind(", ") - 8);  // behind `process `
  }
  if (record.name == "CreateIpForwardEntry2") return "add " + text;
  if (record.name == "DeleteIpForwardEntry2") return "delete " + text;
  if (record.name == "CreateUnicastIpAddressEntry") return "address " + text;
  if (record.name == "SetInterfaceDnsSettings") {
    return "name server " + text.substr(0, text.find(','));
  }
  return record.name == "CreateJobObjectW" ? "job" : "";
}

void Compare(const std::string& what, const Lines& expected, const Lines& observed, Lines& found) {
  const auto agrees = [](const std::string& wanted, const std::string& line) {
    return wanted.ends_with('*') ? line.starts_with(wanted.substr(0, wanted.size() - 1))
                                 : line == wanted;
  };
  size_t same = 0;
  while (same < expected.size() && same < observed.size() &&
         agrees(expected[same], observed[same])) {
    ++same;
  }
  if (same < expected.size() || same < observed.size()) {
    const auto at = [same](const Lines& lines) {
      return same < lines.size() ? lines[same] : std::string("nothing more");
    };
    found.push_back(what + " " + std::to_string(same + 1) + ": expected " + at(expected) +
                    ", found " + at(observed));
  }
}

void CompareSets(const std::string& what, const Lines& expected, const Lines& now, Lines& found) {
  for (const std::string& line : fault::Difference(expected, now)) {
    found.push_back(what + ": " + line);
  }
}

// The value behind a key of the generated file.
std::string ValueOf(const std::string& text, const std::string& key, size_t from) {
  const std::string needle = "\"" + key + "\": \"";
  const size_t at = text.find(needle, from);
  return at == std::string::npos
             ? "nothing"
             : text.substr(at + needle.size(),
                           text.find('"', at + needle.size()) - at - needle.size());
}

}  // namespace

std::string Observer::Whole(const wchar_t* path) const {
  return machine_.files.Read(path).value_or("");
}

void Observer::Begin() {
  machine_.calls.Clear();
  machine_.http.Forget();
  log_ = Whole(kLog);
  trace_ = Whole(kTrace);
}

Observed Observer::Look(const std::string& reply) {
  Observed observed;
  observed.reply = reply;
  observed.log = SplitLines(Since(log_, Whole(kLog)));
  for (const std::string& line : SplitLines(Since(trace_, Whole(kTrace)))) {
    const std::string label = line.starts_with("\xEF\xBB\xBF") ? line.substr(3) : line;
    const std::string begin = label.substr(0, label.find(" +"));
    if (const size_t last = begin.find_last_not_of(' '); last != std::string::npos) {
      observed.trace.push_back(begin.substr(0, last + 1));
    }
  }
  for (const sim::CallRecord& record : machine_.calls.All()) {
    if (const std::string act = ActOf(record); !act.empty()) {
      observed.acts.push_back(act);
    }
  }
  observed.requests = machine_.http.Lines();
  return observed;
}

Lines AliveChildren(sim::Machine& machine) {
  Lines names = machine.processes.Alive();
  std::erase(names, "owner.exe");
  std::sort(names.begin(), names.end());
  return names;
}

Lines OpenHandles(sim::Machine& machine) {
  Lines handles = machine.OpenHandles();
  std::sort(handles.begin(), handles.end());
  return handles;
}

Lines NetworkLines(sim::Machine& machine) {
  const auto lock = machine.Lock();
  return fault::LinesOf(machine.network);
}

std::string ConfigOf(sim::Machine& machine) {
  const std::optional<std::string> text = machine.files.Read(kConfig);
  if (!text || text->empty()) {
    return text ? "" : "none";
  }
  const size_t rules = text->find("domain:panel.example\"], \"outboundTag\"");
  // The node as it was given stands in the last rules.
  const size_t full = text->find("full:", rules);
  const std::string host =
      full != std::string::npos ? text->substr(full + 5, text->find('"', full) - full - 5) : "";
  return (host.empty() ? ValueOf(*text, "address", text->find("vnext")) : host) + " on " +
         ValueOf(*text, "interface", 0);
}

std::vector<ChildPointer> ChildrenOf(sim::Machine& machine) {
  std::vector<ChildPointer> children;
  const auto owners = machine.listeners.Owners();
  for (const auto& process : machine.processes.AliveProcesses()) {
    const std::string name = sim::Narrow(sim::BaseName(process->image));
    if (process->own || name == "owner.exe") {
      continue;
    }
    const ChildPointer child = std::make_shared<Child>();
    child->name = name;
    child->luid = process->adapterLuid;
    child->isOrphan = process->script.adapter && process->script.adapter->vanishesAfter > 100;
    child->isStubborn = process->script.terminationTime != 0;
    child->listens = std::any_of(owners.begin(), owners.end(),
                                 [&](const auto& owner) { return owner.second == process->id; });
    children.push_back(child);
  }
  return children;
}

Lines Differences(const Expected& expected, const Observed& observed) {
  Lines found;
  if (!expected.reply.empty() && expected.reply != observed.reply) {
    found.push_back("reply: expected " + expected.reply + ", found " + observed.reply);
  }
  Compare("log line", expected.log, observed.log, found);
  Compare("trace line", expected.trace, observed.trace, found);
  Compare("act", expected.acts, observed.acts, found);
  Compare("panel request", expected.requests, observed.requests, found);
  return found;
}

Lines Differences(const Model& model, sim::Machine& machine) {
  Lines found;
  CompareSets("network", fault::LinesOf(model.machine().network), NetworkLines(machine), found);
  CompareSets("children", model.machine().Alive(), AliveChildren(machine), found);
  CompareSets("handles", model.Handles(), OpenHandles(machine), found);
  if (model.machine().config != ConfigOf(machine)) {
    found.push_back("configuration: expected " + model.machine().config + ", found " +
                    ConfigOf(machine));
  }
  for (const std::string& mistake : machine.Violations()) {
    found.push_back("mistake: " + mistake);
  }
  return found;
}

}  // namespace sequence
