// Connects as --json prints them, with the trace's own labels.
#ifndef TAVRIN_CLIENT_TRACE_TRACE_JSON_H_
#define TAVRIN_CLIENT_TRACE_TRACE_JSON_H_

#include "client/json/json_text.h"
#include "client/trace/connect_trace.h"

namespace vpn {

void FillTrace(const ConnectTrace& connect, Json& object);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TRACE_TRACE_JSON_H_
