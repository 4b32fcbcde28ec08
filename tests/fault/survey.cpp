#include "tests/fault/survey.h"

#include <algorithm>
#include <map>
#include <utility>

#include "tests/fault/process.h"
#include "tests/sim/api_table.h"
#include "tests/sim/path.h"
#include "tests/sim/text.h"

namespace fault {
namespace {

constexpr std::uint64_t kMostCalls = 5000;

void NoteProcesses(const sim::Machine& machine, Point& point) {
  for (const auto& process : machine.processes.All()) {
    const bool inJob = process->job.lock() != nullptr;
    const std::string name = sim::Narrow(sim::BaseName(process->image));
    // netsh does its work and goes.
    if (!process->exited && !process->own && !inJob && name != "netsh.exe") {
      point.outsideJob.push_back(name);
      point.theirAdapters.push_back(process->adapterLuid);
    }
  }
}

// The labels of the trace, in order.
std::vector<std::string> TraceLabels(const sim::Machine& machine) {
  std::vector<std::string> labels;
  const std::string trace =
      machine.files.Read(L"C:\\Program Files\\Tavrin\\connect-timing.log").value_or("");
  const std::string mark = "\xEF\xBB\xBF";
  size_t at = trace.starts_with(mark) ? mark.size() : 0;
  for (size_t end = trace.find("\r\n"); end != std::string::npos; end = trace.find("\r\n", at)) {
    const std::string label = trace.substr(at, trace.find(" +", at) - at);
    labels.push_back(label.substr(0, label.find_last_not_of(' ') + 1));
    at = end + 2;
  }
  return labels;
}

// Names the step of each call, from what the call log holds since `from`.
void NameSteps(const sim::Machine& machine, size_t from, const std::vector<std::string>& labels,
               std::vector<Point>& points) {
  const std::vector<sim::CallRecord> records = machine.calls.All();
  std::map<std::pair<std::string, std::string>, int> ordinals;
  std::string step = "account";
  size_t label = 0;
  size_t k = 0;
  for (size_t i = from; i < records.size() && k < points.size(); ++i) {
    const sim::CallRecord& record = records[i];
    if (record.text == "\"TAVRIN_TIMING\"") {
      step = labels.at(label);
    }
    if (sim::FindApi(record.name).counted) {
      Point& point = points[k++];
      point.step = step;
      point.name = record.name;
      point.text = record.text;
      point.ordinal = ++ordinals[{step, record.name}];
    }
    if (record.name == "_wfopen_s") {
      ++label;
      step = label < labels.size() ? labels[label] : "disconnect";
    }
  }
}

}  // namespace

bool Point::waitsForNetsh() const {
  return name == "WaitForSingleObject" && text.starts_with("process netsh.exe");
}

std::string Describe(const Point& point) {
  return point.name + ' ' + point.text;
}

Lines DescribeWithSteps(const std::vector<Point>& points) {
  Lines lines;
  for (const Point& point : points) {
    lines.push_back('[' + point.step + "] " + Describe(point));
  }
  return lines;
}

Lines SettledLines(const Stage& stage, const std::vector<Point>& points, size_t index) {
  const Point& settled = points[points[index].waitsForNetsh() ? index + 1 : index];
  netmodel::Network network = settled.network;
  for (const netmodel::Adapter& adapter : settled.network.adapters) {
    const auto& kept = settled.theirAdapters;
    if (stage.before.FindByLuid(adapter.luid) == nullptr &&
        std::find(kept.begin(), kept.end(), adapter.luid) == kept.end()) {
      network.RemoveAdapter(adapter.luid);
    }
  }
  return LinesOf(network);
}

std::vector<Point> TakeSurvey(const Scene& scene) {
  Stage stage(scene);
  sim::Machine& machine = *stage.machine;
  std::vector<Point> points;
  for (std::uint64_t k = 1; k <= kMostCalls; ++k) {
    machine.faults.BeforeCall(k, [&points, &machine] {
      Point& point = points.emplace_back();
      point.network = machine.network;
      NoteProcesses(machine, point);
    });
  }
  bool good = false;
  BeginProcess();
  machine.RunProcess([&] {
    good = stage.Prepare();
    points.clear();
    machine.faults.ResetCount();
    const size_t from = machine.calls.All().size();
    const size_t oldLabels = TraceLabels(machine).size();
    good = Connect().empty() && good;
    Disconnect();
    std::vector<std::string> labels = TraceLabels(machine);
    labels.erase(labels.begin(), labels.begin() + static_cast<std::ptrdiff_t>(oldLabels));
    NameSteps(machine, from, labels, points);
    EndProcess();
  });
  good = good && stage.Now() == LinesOf(stage.before) && machine.Violations().empty();
  return good ? points : std::vector<Point>();
}

}  // namespace fault
