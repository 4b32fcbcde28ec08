#ifndef TAVRIN_SRC_HOST_ENTRY_POINT_H_
#define TAVRIN_SRC_HOST_ENTRY_POINT_H_

// The wide entry point; mingw's start-up code wants it with C linkage. Returns the exit code.
extern "C" int wmain(int argc, wchar_t** argv);

#endif  // TAVRIN_SRC_HOST_ENTRY_POINT_H_
