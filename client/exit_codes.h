// The exit codes that scripts can trust.
#ifndef TAVRIN_CLIENT_EXIT_CODES_H_
#define TAVRIN_CLIENT_EXIT_CODES_H_

namespace vpn {

inline constexpr int kExitDone = 0;
inline constexpr int kExitRefused = 1;  // the service or the panel said no, or a problem was found
inline constexpr int kExitUnreachable = 2;  // no service, or no proper answer from it
inline constexpr int kExitUsage = 3;        // wrong command line
inline constexpr int kExitInterrupted = 130;

}  // namespace vpn

#endif  // TAVRIN_CLIENT_EXIT_CODES_H_
