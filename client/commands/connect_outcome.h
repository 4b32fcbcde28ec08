// How a connect went, and what is told of it.
#ifndef TAVRIN_CLIENT_COMMANDS_CONNECT_OUTCOME_H_
#define TAVRIN_CLIENT_COMMANDS_CONNECT_OUTCOME_H_

#include <cstdint>
#include <string>

#include "client/cli/command_line.h"
#include "client/console/output.h"
#include "client/pipe/exchange.h"
#include "client/pipe/requests.h"
#include "client/service/presence.h"
#include "client/trace/connect_trace.h"
#include "src/common/node_info.h"

namespace vpn {

struct ConnectPlan {
  ServicePlace place;
  bool isKnown = false;  // the node was found in the account
  NodeInfo node;
};

// How the one exchange went.
struct ConnectOutcome {
  ExchangeEnd end = ExchangeEnd::kAbsent;
  Reply reply;
  std::uint64_t time = 0;  // milliseconds from the sending of the request to its end
  bool wasSent = false;
  std::uint64_t xrayLogSize = 0;  // before
};

// True for a refusal by the checks before the start.
bool FailedInChecks(const std::wstring& error);

// `connect` is what the trace holds of it, possibly null. Gives the exit code.
int TellOutcome(const CommandLine& line, const ConnectPlan& plan, const ConnectOutcome& outcome,
                const ConnectTrace* connect, Screen& screen);

// No node has the wanted name; `nearest` is the one that was probably meant, possibly empty.
int TellUnknownNode(const CommandLine& line, const std::wstring& nearest, Screen& screen);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_COMMANDS_CONNECT_OUTCOME_H_
