// One exchange over a pipe as a client sees it, without the pauses that the tests' client makes.
#ifndef TAVRIN_TESTS_BENCH_SERVICE_EXCHANGE_H_
#define TAVRIN_TESTS_BENCH_SERVICE_EXCHANGE_H_

#include <string>

namespace bench {

inline constexpr wchar_t kServicePipe[] = L"\\\\.\\pipe\\TavrinService";
inline constexpr char kStatus[] = R"({"op":"status"})";
// Of the status of a service without a tunnel.
inline constexpr char kStatusReply[] = R"({"ok":true,"running":false,"error":""})";

// The reply's payload. Waits until the pipe is there, with `pause` milliseconds between two looks.
// Throws std::runtime_error when that takes too long, and when the reply does not come whole.
std::string Exchange(const wchar_t* pipe, const std::string& request, unsigned long pause = 0);

}  // namespace bench

#endif  // TAVRIN_TESTS_BENCH_SERVICE_EXCHANGE_H_
