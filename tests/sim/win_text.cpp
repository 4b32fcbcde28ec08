// Text conversion.
#include "tests/sim/call.h"
#include "tests/sim/text.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

using sim::Call;

namespace {

// Gives the size, or copies; 0 with an error when the text does not fit.
template <class Text, class Unit>
int Deliver(const Call& call, const Text& text, Unit* buffer, int size) {
  const int length = static_cast<int>(text.size());
  if (size == 0) {
    return length;
  }
  std::copy_n(text.begin(), std::min(length, size), buffer);
  return length <= size ? length : call.Fail(0, ERROR_INSUFFICIENT_BUFFER);
}

bool BadArguments(UINT codePage, const void* source, int count, int size) {
  return codePage != CP_UTF8 || source == nullptr || count == 0 || count < -1 || size < 0;
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCCH bytes, int byteCount, LPWSTR text,
                        int unitCount) {
  Call call("MultiByteToWideChar");
  if (call.failed()) {
    return call.Fail(0);
  }
  if (BadArguments(codePage, bytes, byteCount, unitCount)) {
    return call.Fail(0, ERROR_INVALID_PARAMETER);
  }
  if (flags != 0) {
    return call.Fail(0, ERROR_INVALID_FLAGS);  // the strict mode is not modelled
  }
  const size_t length = byteCount == -1 ? std::strlen(bytes) + 1 : static_cast<size_t>(byteCount);
  return Deliver(call, sim::Widen({bytes, length}), text, unitCount);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH text, int unitCount, LPSTR bytes,
                        int byteCount, LPCCH defaultChar, LPBOOL usedDefaultChar) {
  Call call("WideCharToMultiByte");
  if (call.failed()) {
    return call.Fail(0);
  }
  const bool substitutes = defaultChar != nullptr || usedDefaultChar != nullptr;
  if (BadArguments(codePage, text, unitCount, byteCount) || substitutes) {
    return call.Fail(0, ERROR_INVALID_PARAMETER);
  }
  if (flags != 0) {
    return call.Fail(0, ERROR_INVALID_FLAGS);
  }
  const size_t length = unitCount == -1 ? std::wcslen(text) + 1 : static_cast<size_t>(unitCount);
  return Deliver(call, sim::Narrow({text, length}), bytes, byteCount);
}
