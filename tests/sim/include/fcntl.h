// The host's own <fcntl.h>, and the text modes of the Microsoft C runtime.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_FCNTL_H_
#define TAVRIN_TESTS_SIM_INCLUDE_FCNTL_H_

#include_next <fcntl.h>

#ifndef _O_U8TEXT
#define _O_TEXT 0x4000
#define _O_BINARY 0x8000
#define _O_WTEXT 0x10000
#define _O_U16TEXT 0x20000
#define _O_U8TEXT 0x40000
#endif

#endif  // TAVRIN_TESTS_SIM_INCLUDE_FCNTL_H_
