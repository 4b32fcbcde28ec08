// The texts of requests, and what a reply says.
#ifndef TAVRIN_CLIENT_PIPE_REQUESTS_H_
#define TAVRIN_CLIENT_PIPE_REQUESTS_H_

#include <string>
#include <string_view>

namespace vpn {

inline constexpr char kStatusRequest[] = R"({"op":"status"})";
inline constexpr char kDisconnectRequest[] = R"({"op":"disconnect"})";
inline constexpr char kShutdownRequest[] = R"({"op":"shutdown"})";

// The empty name asks for the account's first node.
std::string ConnectRequest(const std::wstring& node);

struct Reply {
  bool ok = false;
  bool running = false;
  std::wstring error;
};

// False for a text that is none of the service's replies.
bool ParseReply(std::string_view text, Reply& reply);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_PIPE_REQUESTS_H_
