#ifndef TAVRIN_TESTS_SIM_INCLUDE_TLHELP32_H_
#define TAVRIN_TESTS_SIM_INCLUDE_TLHELP32_H_

#include <windows.h>
#include <win/toolhelp.h>

#endif  // TAVRIN_TESTS_SIM_INCLUDE_TLHELP32_H_
