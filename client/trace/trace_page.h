// All connects of a trace as one page for a browser: nothing is loaded from elsewhere.
#ifndef TAVRIN_CLIENT_TRACE_TRACE_PAGE_H_
#define TAVRIN_CLIENT_TRACE_TRACE_PAGE_H_

#include <string>
#include <vector>

#include "client/trace/connect_trace.h"

namespace vpn {

// UTF-8. Each bar carries its milliseconds, so that a test can hold its length against them.
std::string TracePage(const std::vector<ConnectTrace>& connects);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TRACE_TRACE_PAGE_H_
