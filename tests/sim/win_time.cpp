// Calendar time.
#include "tests/sim/call.h"
#include "tests/sim/file_time.h"

#include <windows.h>

#include <chrono>

using sim::Call;
using sim::FileTimeOf;

namespace {

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

constexpr std::chrono::sys_days kFirstDay = std::chrono::year(1601) / 1 / 1;

void SetDate(std::chrono::sys_days day, SYSTEMTIME* systemTime) {
  const std::chrono::year_month_day date(day);
  systemTime->wYear = static_cast<WORD>(static_cast<int>(date.year()));
  systemTime->wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
  systemTime->wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
  systemTime->wDayOfWeek = static_cast<WORD>(std::chrono::weekday(day).c_encoding());
}

void SetTime(std::chrono::milliseconds sinceMidnight, SYSTEMTIME* systemTime) {
  const std::chrono::hh_mm_ss time(sinceMidnight);
  systemTime->wHour = static_cast<WORD>(time.hours().count());
  systemTime->wMinute = static_cast<WORD>(time.minutes().count());
  systemTime->wSecond = static_cast<WORD>(time.seconds().count());
  systemTime->wMilliseconds = static_cast<WORD>(time.subseconds().count());
}

// 1969, because of zones east of Greenwich, to 3001; a wrong guess is corrected by the result.
bool IsPlausible(std::int64_t year) {
  return year >= 1969 && year <= 3001;
}

}  // namespace

FILETIME sim::FileTimeOf(std::int64_t unixMilliseconds) {
  const std::chrono::milliseconds sinceFirstDay =
      std::chrono::milliseconds(unixMilliseconds) - kFirstDay.time_since_epoch();
  const auto ticks = static_cast<std::uint64_t>(Ticks(sinceFirstDay).count());
  return {static_cast<DWORD>(ticks & 0xFFFFFFFF), static_cast<DWORD>(ticks >> 32)};
}

void GetSystemTime(SYSTEMTIME* systemTime) {
  using namespace std::chrono;
  Call call("GetSystemTime");
  const sys_time<milliseconds> now{milliseconds(call->clock.UnixMilliseconds())};
  const sys_days today = floor<days>(now);
  SetDate(today, systemTime);
  SetTime(now - today, systemTime);
}

void GetSystemTimeAsFileTime(FILETIME* fileTime) {
  Call call("GetSystemTimeAsFileTime");
  *fileTime = FileTimeOf(call->clock.UnixMilliseconds());
}

BOOL GetProcessTimes(HANDLE process, FILETIME* creation, FILETIME* exit, FILETIME* kernel,
                     FILETIME* user) {
  Call call("GetProcessTimes", {process});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto target = call.Kernel<sim::Process>(process);
  if (!target) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  const auto age = static_cast<std::int64_t>(call->clock.Now() - target->startedAt);
  *creation = FileTimeOf(call->clock.UnixMilliseconds() - age);
  *exit = *kernel = *user = {};
  return TRUE;
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* systemTime, FILETIME* fileTime) {
  Call call("SystemTimeToFileTime");
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const std::chrono::sys_days day = std::chrono::year(systemTime->wYear) /
                                    static_cast<int>(systemTime->wMonth) /
                                    static_cast<int>(systemTime->wDay);
  const auto time = std::chrono::hours(systemTime->wHour) +
                    std::chrono::minutes(systemTime->wMinute) +
                    std::chrono::seconds(systemTime->wSecond);
  *fileTime = FileTimeOf(
      std::chrono::duration_cast<std::chrono::milliseconds>(day.time_since_epoch() + time).count());
  return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime) {
  Call call("FileTimeToSystemTime");
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const std::uint64_t ticks =
      static_cast<std::uint64_t>(fileTime->dwHighDateTime) << 32 | fileTime->dwLowDateTime;
  if (ticks > 0x7FFFFFFFFFFFFFFF) {
    return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
  }
  const auto sinceFirstDay = Ticks(static_cast<std::int64_t>(ticks));
  const auto days = std::chrono::floor<std::chrono::days>(sinceFirstDay);
  SetDate(kFirstDay + days, systemTime);
  SetTime(std::chrono::floor<std::chrono::milliseconds>(sinceFirstDay - days), systemTime);
  return TRUE;
}

long long _mkgmtime64(std::tm* time) {
  constexpr std::int64_t kLast = 32535215999;  // 23:59:59 of the last day of the year 3000
  constexpr std::int64_t kSecondsPerDay = 86400;
  std::int64_t year = std::int64_t{time->tm_year} + 1900;
  if (!IsPlausible(year)) {
    return -1;
  }
  std::int64_t month = time->tm_mon % 12;
  year += time->tm_mon / 12 - (month < 0 ? 1 : 0);
  month += month < 0 ? 12 : 0;
  if (!IsPlausible(year)) {
    return -1;
  }
  const std::chrono::sys_days firstOfMonth =
      std::chrono::year(static_cast<int>(year)) / static_cast<int>(month + 1) / 1;
  const std::int64_t days = firstOfMonth.time_since_epoch().count() + time->tm_mday - 1;
  const std::int64_t seconds = days * kSecondsPerDay + std::int64_t{time->tm_hour} * 3600 +
                               std::int64_t{time->tm_min} * 60 + time->tm_sec;
  if (seconds < 0 || seconds > kLast) {
    return -1;
  }
  (void)gmtime_r(&seconds, time);
  return seconds;
}
