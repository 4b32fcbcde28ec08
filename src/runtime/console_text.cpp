#include "src/runtime/console_text.h"

#include <windows.h>
#include <fcntl.h>
#include <io.h>

#include <cwchar>

namespace vpn {

constexpr size_t kBufferSize = 4096;  // bytes

void UseUtf8Console() {
  (void)SetConsoleOutputCP(CP_UTF8);
  // Without a console (a service) the streams have no descriptor; there is nothing to set then.
  for (std::FILE* stream : {stdout, stderr}) {
    (void)_setmode(_fileno(stream), _O_U8TEXT);
    // Whole texts at a time: unit by unit, a character of two units would fall apart.
    (void)std::setvbuf(stream, nullptr, _IOFBF, kBufferSize);
  }
}

void WriteConsoleText(std::FILE* stream, const std::wstring& text) {
  for (const wchar_t unit : text) {
    (void)std::fputwc(unit, stream);  // a lost character is no failure
  }
  (void)std::fflush(stream);
}

}  // namespace vpn
