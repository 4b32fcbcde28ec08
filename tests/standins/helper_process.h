// What the stand-ins for the helper programs have in common.
#ifndef TAVRIN_TESTS_STANDINS_HELPER_PROCESS_H_
#define TAVRIN_TESTS_STANDINS_HELPER_PROCESS_H_

#include <cstdint>
#include <string>

namespace standins {

// For knobs in milliseconds; kNever sleeps for ever.
void SleepFor(std::int64_t milliseconds);
// Ends this process after the time, with exit code 1, from a thread of its own; kNever does not.
void DieAfter(std::int64_t milliseconds);
// The directory of the running executable, without a separator at the end.
std::wstring OwnDirectory();
// Ends the process at once: no static destructor may touch the shared machine any more.
[[noreturn]] void End(std::int64_t exitCode);

}  // namespace standins

#endif  // TAVRIN_TESTS_STANDINS_HELPER_PROCESS_H_
