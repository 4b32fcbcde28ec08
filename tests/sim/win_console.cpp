// The console, and the C runtime's streams.
#include "tests/sim/call.h"
#include "tests/sim/text.h"

#include <windows.h>
#include <io.h>

#include <cerrno>
#include <climits>
#include <cwctype>

// This file defines what the macros of the same names stand for, and falls back on the host's own.
#undef stdout
#undef stderr
#undef fputwc
#undef fputws

using sim::Call;

namespace {

constexpr int kNoDescriptor = -2;  // what the runtime gives for a stream without a console

sim::Sharing SharingOf(int mode) {
  return {mode == _SH_DENYRW || mode == _SH_DENYRD, mode == _SH_DENYRW || mode == _SH_DENYWR};
}

bool IsConsole(const sim::Machine& machine, std::FILE* file) {
  return file == machine.console.output() || file == machine.console.errors();
}

}  // namespace

BOOL SetConsoleOutputCP(UINT codePage) {
  Call call("SetConsoleOutputCP", {codePage});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!call->console.attached) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  call->console.SetCodePage(codePage);
  return TRUE;
}

BOOL SetConsoleCtrlHandler(PHANDLER_ROUTINE handler, BOOL add) {
  Call call("SetConsoleCtrlHandler", {add});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (add == FALSE) {
    const bool removed = call->console.RemoveHandler(handler);
    return removed ? TRUE : call.Fail(FALSE, ERROR_INVALID_PARAMETER);
  }
  call->console.AddHandler(handler);
  return TRUE;
}

BOOL FreeConsole() {
  Call call("FreeConsole");
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (!call->console.attached) {
    return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
  }
  call->console.attached = false;
  return TRUE;
}

std::FILE* _wfsopen(const wchar_t* name, const wchar_t* mode, int sharing) {
  Call call("_wfsopen", {name, mode, sharing});
  sim::OpenMode parsed;
  std::FILE* file = nullptr;
  errno = EINVAL;
  if (call.failed()) {
    errno = static_cast<int>(call.code());
  } else if (sim::ParseOpenMode(mode, &parsed)) {
    errno = call->streams.Open(name, parsed, SharingOf(sharing), call.name(), call.process()->id,
                               &file);
  }
  return file;
}

errno_t _wfopen_s(std::FILE** file, const wchar_t* name, const wchar_t* mode) {
  Call call("_wfopen_s", {name, mode});
  *file = nullptr;
  if (call.failed()) {
    return static_cast<errno_t>(call.code());
  }
  sim::OpenMode parsed;
  if (!sim::ParseOpenMode(mode, &parsed)) {
    return EINVAL;
  }
  // The secure variant lets others read while it reads, and shares nothing while it writes.
  const sim::Sharing sharing = {parsed.write, true};
  return call->streams.Open(name, parsed, sharing, call.name(), call.process()->id, file);
}

std::FILE* sim_stdout() {
  const std::shared_ptr<sim::Machine> machine = sim::Machine::Current();
  return machine ? machine->console.output() : ::stdout;
}

std::FILE* sim_stderr() {
  const std::shared_ptr<sim::Machine> machine = sim::Machine::Current();
  return machine ? machine->console.errors() : ::stderr;
}

int _fileno(std::FILE* file) {
  const std::shared_ptr<sim::Machine> machine = sim::Machine::Current();
  const sim::Stream* const stream = machine ? machine->streams.Find(file) : nullptr;
  if (stream != nullptr && stream->node) {
    return stream->descriptor;
  }
  if (!machine || !IsConsole(*machine, file) || !machine->console.attached) {
    return kNoDescriptor;
  }
  return file == machine->console.output() ? 1 : 2;
}

int _setmode(int descriptor, int mode) {
  Call call("_setmode", {descriptor, mode});
  if (descriptor != 1 && descriptor != 2) {
    errno = EBADF;
    return -1;
  }
  const sim::Console& console = call->console;
  sim::Stream* const stream =
      call->streams.Find(descriptor == 1 ? console.output() : console.errors());
  const int before = stream->mode.unicode ? _O_U8TEXT : _O_TEXT;
  stream->mode.unicode = mode == _O_U8TEXT;
  return before;
}

std::wint_t sim_fputwc(wchar_t unit, std::FILE* file) {
  const std::shared_ptr<sim::Machine> machine = sim::Machine::Current();
  const auto lock = machine ? machine->Lock() : sim::MachineLock();
  sim::Stream* const stream = machine ? machine->streams.Find(file) : nullptr;
  if (stream == nullptr) {
    return std::fputwc(unit, file);
  }
  if (IsConsole(*machine, file) && !machine->console.attached) {
    return WEOF;
  }
  return machine->streams.PutUnit(*stream, unit) ? static_cast<std::wint_t>(unit) : WEOF;
}

int sim_fputws(const wchar_t* text, std::FILE* file) {
  for (; *text != L'\0'; ++text) {
    if (sim_fputwc(*text, file) == WEOF) {
      return EOF;
    }
  }
  return 0;
}

int _fseeki64(std::FILE* file, long long offset, int origin) {
  return fseeko(file, offset, origin);
}

// Overflow is held at the bounds, as the runtime's does.
int _wtoi(const wchar_t* text) {
  while (std::iswspace(static_cast<std::wint_t>(*text))) {
    ++text;
  }
  const bool negative = *text == L'-';
  text += *text == L'-' || *text == L'+' ? 1 : 0;
  long long value = 0;
  for (; *text >= L'0' && *text <= L'9' && value <= INT_MAX; ++text) {
    value = value * 10 + (*text - L'0');
  }
  value = negative ? -value : value;
  return value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : static_cast<int>(value);
}
