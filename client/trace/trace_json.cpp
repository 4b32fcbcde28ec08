#include "client/trace/trace_json.h"

namespace vpn {

Json TraceObject(const ConnectTrace& connect) {
  Json object;
  object["complete"] = connect.isComplete();
  object["milliseconds"] = connect.totalTime();
  object["marks"] = Json::array();
  for (const TraceMark& mark : connect.marks) {
    Json entry;
    entry["label"] = mark.label;
    entry["step"] = mark.step;
    entry["total"] = mark.total;
    object["marks"].push_back(std::move(entry));
  }
  return object;
}

}  // namespace vpn
