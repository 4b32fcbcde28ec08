#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "tests/sim/fixture.h"

#include <windows.h>

namespace sim {
namespace {

class Calendar : public MachineTest {};

std::string Date(std::uint64_t ticks) {
  const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  SYSTEMTIME date = {};
  if (!FileTimeToSystemTime(&time, &date)) {
    return std::to_string(GetLastError());
  }
  char text[64];
  std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d.%d day %d", date.wYear, date.wMonth,
                date.wDay, date.wHour, date.wMinute, date.wSecond, date.wMilliseconds,
                date.wDayOfWeek);
  return text;
}

TEST_F(Calendar, FileTimesBecomeUtcDates) {
  EXPECT_EQ(Date(0), "1601-1-1 0:0:0.0 day 1");
  EXPECT_EQ(Date(116444736000000000), "1970-1-1 0:0:0.0 day 4");
  EXPECT_EQ(Date(116444736000000000 + 17000000009990000), "2023-11-14 22:13:20.999 day 2");
  EXPECT_EQ(Date(0x7FFFFFFFFFFFFFFF), "30828-9-14 2:48:5.477 day 4");
  EXPECT_EQ(Date(0x8000000000000000), "87");
}

TEST_F(Calendar, ThePresentTimeIsTheMachines) {
  machine.clock.SetDate(2025, 6, 15, 12, 30, 1);
  FILETIME now = {};
  GetSystemTimeAsFileTime(&now);
  EXPECT_EQ(Date(static_cast<std::uint64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime),
            "2025-6-15 12:30:1.0 day 0");
}

long long EndOf(int year, int month, int day) {
  std::tm date = {};
  date.tm_year = year - 1900;
  date.tm_mon = month - 1;
  date.tm_mday = day;
  date.tm_hour = 23;
  date.tm_min = 59;
  date.tm_sec = 59;
  return _mkgmtime64(&date);
}

TEST_F(Calendar, DatesBecomeSecondsAndOverflowIsNormalised) {
  EXPECT_EQ(EndOf(2027, 3, 1), 1803945599);
  EXPECT_EQ(EndOf(1970, 1, 1), 86399);
  EXPECT_EQ(EndOf(2024, 2, 30), 1709337599);
  EXPECT_EQ(EndOf(2024, 14, 1), 1738454399);
  EXPECT_EQ(EndOf(2024, 0, 1), 1701475199);
  EXPECT_EQ(EndOf(2024, 1, -400), 1669507199);
  std::tm date = {};
  date.tm_year = 124;
  date.tm_mon = 1;
  date.tm_mday = 30;
  (void)_mkgmtime64(&date);
  EXPECT_EQ(date.tm_mon, 2);
  EXPECT_EQ(date.tm_mday, 1);
}

TEST_F(Calendar, DatesOutsideTheYears1970To3000HaveNoSeconds) {
  EXPECT_EQ(EndOf(3000, 12, 31), 32535215999);
  EXPECT_EQ(EndOf(3000, 12, 32), -1);
  EXPECT_EQ(EndOf(3001, 1, 1), -1);
  EXPECT_EQ(EndOf(3001, -12, 1), 32501087999);
  EXPECT_EQ(EndOf(3002, -12, 1), -1);
  EXPECT_EQ(EndOf(1969, 12, 31), -1);
  EXPECT_EQ(EndOf(2147483647, 1, 1), -1);
  EXPECT_EQ(EndOf(2024, 2147483647, 1), -1);
  EXPECT_EQ(EndOf(2024, 1, 2147483647), -1);
}

}  // namespace
}  // namespace sim
