// Calendar time: file times, and the C runtime's way from a calendar date to seconds.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_TIME_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_TIME_H_

#include <win/base.h>

#include <ctime>

using PFILETIME = FILETIME*;
using LPFILETIME = FILETIME*;

void GetSystemTimeAsFileTime(FILETIME* fileTime);
BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime);
BOOL SystemTimeToFileTime(const SYSTEMTIME* systemTime, FILETIME* fileTime);
BOOL GetProcessTimes(HANDLE process, FILETIME* creation, FILETIME* exit, FILETIME* kernel,
                     FILETIME* user);
long long _mkgmtime64(std::tm* time);

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_TIME_H_
