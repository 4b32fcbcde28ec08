#ifndef TAVRIN_TESTS_SIM_INCLUDE_WINDOWS_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WINDOWS_H_

#include <win/base.h>
#include <win/kernel.h>
#include <win/files.h>
#include <win/registry.h>
#include <win/services.h>
#include <win/crt.h>
#include <win/terminal.h>
#include <win/time.h>
#include <win/user.h>
#include <win/version.h>

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WINDOWS_H_
