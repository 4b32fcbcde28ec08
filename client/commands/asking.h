// What the commands have in common that ask the service something.
#ifndef TAVRIN_CLIENT_COMMANDS_ASKING_H_
#define TAVRIN_CLIENT_COMMANDS_ASKING_H_

#include <cstdint>
#include <string>

#include "client/console/interrupt.h"
#include "client/console/moving_line.h"
#include "client/console/output.h"
#include "client/pipe/exchange.h"
#include "client/pipe/requests.h"

namespace vpn {

// Hooks that tell on stderr that the service is busy, and that end at Ctrl+C. All three must
// outlive the exchange.
ExchangeHooks PatientHooks(MovingLine& moving, Output& err, const InterruptWatch& interrupt);

// Exchanges, and turns an end without a proper reply into `end` other than kReplied.
ExchangeEnd Ask(const std::string& request, const ExchangeHooks& hooks, Reply& reply);

// Asks with `PatientHooks`, and waits a minute for the reply. `whenOurs` runs when the request is
// about to be sent.
ExchangeEnd AskPatiently(
    const std::string& request, Screen& screen, Reply& reply,
    const std::function<void()>& whenOurs = [] {});

// Why there is no reply: a key for scripts, a sentence, and what to do.
struct NoReply {
  std::string key;
  std::wstring sentence;
  std::wstring whatToDo;
};
NoReply DescribeNoReply(ExchangeEnd end);

// True when there is a service at work, although it gave no reply.
bool WasReached(ExchangeEnd end);

// Tells it on stderr, or with `json` as the answer too. Gives the exit code.
int FailWithoutReply(ExchangeEnd end, bool json, Screen& screen);

// The service's text as it stands, and what to do, on stderr.
void TellRefusal(const std::wstring& error, Screen& screen);

// With what to do of its own.
void TellRefusal(const std::wstring& error, const std::wstring& whatToDo, Screen& screen);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_COMMANDS_ASKING_H_
