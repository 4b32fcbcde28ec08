// The console: what the product wrote on its standard streams, and who listens for Ctrl+C.
#ifndef TAVRIN_TESTS_SIM_CONSOLE_H_
#define TAVRIN_TESTS_SIM_CONSOLE_H_

#include <cstdint>
#include <cstdio>
#include <deque>
#include <string>
#include <vector>

#include "tests/sim/core.h"
#include "tests/sim/streams.h"
#include "tests/sim/terminal.h"

namespace sim {

class Console {
 public:
  using Handler = int (*)(std::uint32_t event);

  Console(Core& core, Streams& streams);
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  // UTF-8, with the plain line feeds that the program wrote. Wide text outside ASCII arrives only
  // on a stream that _setmode has put into UTF-8 mode.
  std::string Output() const;
  std::string Errors() const;
  std::vector<std::uint32_t> CodePages() const;  // every one that was set, in order
  // A person's window instead of a file or pipe: GetConsoleMode and its kin work, and what
  // WriteConsoleW writes stands on the screen.
  bool isTerminal = false;
  Terminal terminal;
  // The standard input: the bytes of a file or pipe, or with `hasKeyboard` what a person types, a
  // line for each time that the program asks; "\x03" is Ctrl+C.
  std::string input;
  bool hasKeyboard = false;
  std::deque<std::wstring> typed;
  std::uint32_t inputMode = 7;  // line by line, echoed, Ctrl+C as an event
  bool attached = true;         // cleared by FreeConsole
  // Calls the handlers, last added first, on this thread, until one says that it took the event.
  bool Send(std::uint32_t event);

  // For the platform's calls.
  static void* OutputHandle() { return reinterpret_cast<void*>(std::uintptr_t{0x60000001}); }
  static void* ErrorHandle() { return reinterpret_cast<void*>(std::uintptr_t{0x60000002}); }
  static void* InputHandle() { return reinterpret_cast<void*>(std::uintptr_t{0x60000003}); }
  static bool IsStandard(const void* handle) {
    return handle == OutputHandle() || handle == ErrorHandle();
  }
  // The next bytes of the standard input, `count` at most.
  std::string TakeInput(size_t count);
  // What WriteFile writes on a standard handle.
  void Append(const void* handle, const std::string& bytes);
  std::FILE* output() const { return output_; }
  std::FILE* errors() const { return errors_; }
  void SetCodePage(std::uint32_t codePage);
  void AddHandler(Handler handler);
  bool RemoveHandler(Handler handler);

 private:
  Core& core_;
  std::string outputText_;
  std::string errorText_;
  std::vector<std::uint32_t> codePages_;
  std::vector<Handler> handlers_;
  std::FILE* output_;
  std::FILE* errors_;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_CONSOLE_H_
