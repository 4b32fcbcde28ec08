// The Microsoft C runtime's additions. Streams of the simulated machine are ordinary FILE*s, so
// fread, fwrite, fflush and fclose are the host's own; the wide output functions are replaced,
// because the host's would refuse every character outside ASCII in the "C" locale.
#ifndef TAVRIN_TESTS_SIM_INCLUDE_WIN_CRT_H_
#define TAVRIN_TESTS_SIM_INCLUDE_WIN_CRT_H_

#include <win/base.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>

#define _SH_DENYRW 0x10
#define _SH_DENYWR 0x20
#define _SH_DENYRD 0x30
#define _SH_DENYNO 0x40
#define _O_TEXT 0x4000
#define _O_BINARY 0x8000
#define _O_WTEXT 0x10000
#define _O_U16TEXT 0x20000
#define _O_U8TEXT 0x40000

std::FILE* _wfsopen(const wchar_t* name, const wchar_t* mode, int sharing);
errno_t _wfopen_s(std::FILE** file, const wchar_t* name, const wchar_t* mode);
int _setmode(int descriptor, int mode);
int _fileno(std::FILE* file);
int _wtoi(const wchar_t* text);
int _fseeki64(std::FILE* file, long long offset, int origin);

std::FILE* sim_stdout();
std::FILE* sim_stderr();
std::wint_t sim_fputwc(wchar_t unit, std::FILE* file);
int sim_fputws(const wchar_t* text, std::FILE* file);

namespace std {  // so that both spellings reach the machine
using ::sim_fputwc;
using ::sim_fputws;
}  // namespace std

#undef stdout
#undef stderr
#define stdout (sim_stdout())
#define stderr (sim_stderr())
#define fputwc sim_fputwc
#define fputws sim_fputws

#endif  // TAVRIN_TESTS_SIM_INCLUDE_WIN_CRT_H_
