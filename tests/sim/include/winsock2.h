#ifndef TAVRIN_TESTS_SIM_INCLUDE_WINSOCK2_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WINSOCK2_H_

#include <windows.h>
#include <win/sockets.h>

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WINSOCK2_H_
