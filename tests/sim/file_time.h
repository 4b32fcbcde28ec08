// A moment as the platform counts it.
#ifndef TAVRIN_TESTS_SIM_FILE_TIME_H_
#define TAVRIN_TESTS_SIM_FILE_TIME_H_

#include <cstdint>

#include <win/base.h>

namespace sim {

FILETIME FileTimeOf(std::int64_t unixMilliseconds);

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_FILE_TIME_H_
