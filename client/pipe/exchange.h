// One exchange with the service: waits while it is busy, sends the request, waits for the reply.
#ifndef TAVRIN_CLIENT_PIPE_EXCHANGE_H_
#define TAVRIN_CLIENT_PIPE_EXCHANGE_H_

#include <cstdint>
#include <functional>
#include <string>

namespace vpn {

enum class ExchangeEnd {
  kReplied,
  kAbsent,       // no pipe, and nothing that could make one soon
  kNoPipe,       // the service starts or runs, and made no pipe for as long as the patience lasted
  kBusy,         // somebody else was served for as long as the patience lasted
  kRefused,      // the pipe is there, but this user may not open it
  kBroken,       // the connection ended without a whole frame, or what came is none
  kHalfReply,    // a reply began and did not go on
  kTimedOut,     // connected, and no reply in time
  kInterrupted,  // by the user
};

struct ExchangeHooks {
  // Milliseconds; the second counts from the sending of the request, and 0 stands for no limit.
  std::uint64_t patience = 60'000;
  std::uint64_t replyLimit = 0;

  // Called while the service is busy, or while it has no pipe, with the milliseconds so far.
  std::function<void(std::uint64_t)> whileBusy;
  std::function<void(std::uint64_t)> whileNoPipe;
  // Called when the request is about to be sent.
  std::function<void()> beforeSending;
  // Called while the reply is awaited, with the milliseconds so far.
  std::function<void(std::uint64_t)> whileWaiting;
  // True ends the exchange.
  std::function<bool()> isInterrupted;
};

// `reply` is the frame's payload, set for kReplied alone.
ExchangeEnd Exchange(const std::string& request, const ExchangeHooks& hooks, std::string& reply);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_PIPE_EXCHANGE_H_
