#include "src/host/console_text.h"

#include <windows.h>
#include <fcntl.h>
#include <io.h>

#include <cwchar>

namespace vpn {

void UseUtf8Console() {
  (void)SetConsoleOutputCP(CP_UTF8);
  // Without a console (a service) the streams have no descriptor; there is nothing to set then.
  (void)_setmode(_fileno(stdout), _O_U8TEXT);
  (void)_setmode(_fileno(stderr), _O_U8TEXT);
}

void WriteConsoleText(std::FILE* stream, const std::wstring& text) {
  for (const wchar_t unit : text) {
    (void)std::fputwc(unit, stream);  // a lost character on the console is nobody's failure
  }
  (void)std::fflush(stream);
}

}  // namespace vpn
