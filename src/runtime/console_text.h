// Wide text on the console's standard streams.
#ifndef TAVRIN_SRC_RUNTIME_CONSOLE_TEXT_H_
#define TAVRIN_SRC_RUNTIME_CONSOLE_TEXT_H_

#include <cstdio>
#include <string>

namespace vpn {

// Code page 65001 for the console, and UTF-8 for wide text on both streams: in the runtime's own
// default mode the first character outside ASCII would be lost.
void UseUtf8Console();

// Writes all of `text`, NULs included, and flushes.
void WriteConsoleText(std::FILE* stream, const std::wstring& text);

}  // namespace vpn

#endif  // TAVRIN_SRC_RUNTIME_CONSOLE_TEXT_H_
