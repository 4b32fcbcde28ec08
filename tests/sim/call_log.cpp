#include "tests/sim/call_log.h"

#include <algorithm>
#include <utility>

namespace sim {

std::vector<std::string> CallLog::Names() const {
  const MachineLock lock = core_.Lock();
  std::vector<std::string> names;
  for (const CallRecord& record : records_) {
    names.push_back(record.name);
  }
  return names;
}

std::vector<std::string> CallLog::TextsOf(const std::string& name) const {
  const MachineLock lock = core_.Lock();
  std::vector<std::string> texts;
  for (const CallRecord& record : records_) {
    if (record.name == name) {
      texts.push_back(record.text);
    }
  }
  return texts;
}

std::string CallLog::LatestText(const std::string& name, std::uint32_t processId) const {
  const MachineLock lock = core_.Lock();
  const auto latest =
      std::find_if(records_.rbegin(), records_.rend(), [&](const CallRecord& record) {
        return record.name == name && record.processId == processId;
      });
  return latest == records_.rend() ? "" : latest->text;
}

std::vector<std::string> CallLog::Sequence(const std::set<std::string>& names) const {
  const MachineLock lock = core_.Lock();
  std::vector<std::string> lines;
  for (const CallRecord& record : records_) {
    if (names.count(record.name) != 0) {
      lines.push_back(record.name + ' ' + record.text);
    }
  }
  return lines;
}

void CallLog::Clear() {
  const MachineLock lock = core_.Lock();
  records_.clear();
}

void CallLog::Add(CallRecord record) {
  const MachineLock lock = core_.Lock();
  records_.push_back(std::move(record));
}

}  // namespace sim
