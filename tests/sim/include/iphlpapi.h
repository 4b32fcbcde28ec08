#ifndef TAVRIN_TESTS_SIM_INCLUDE_IPHLPAPI_H_
#define TAVRIN_TESTS_SIM_INCLUDE_IPHLPAPI_H_

#include <windows.h>
#include <win/ip_helper.h>

#endif  // TAVRIN_TESTS_SIM_INCLUDE_IPHLPAPI_H_
