#include "client/trace/trace_json.h"

namespace vpn {

void FillTrace(const ConnectTrace& connect, Json& object) {
  PutFlag(object, "complete", connect.isComplete());
  PutNumber(object, "milliseconds", static_cast<std::int64_t>(connect.totalTime()));
  Json& marks = PutList(object, "marks");
  for (const TraceMark& mark : connect.marks) {
    Json& entry = AppendObject(marks);
    PutUtf8(entry, "label", mark.label);
    PutNumber(entry, "step", static_cast<std::int64_t>(mark.step));
    PutNumber(entry, "total", static_cast<std::int64_t>(mark.total));
  }
}

}  // namespace vpn
