#include "src/runtime/process_state.h"

#include <utility>

namespace vpn {

std::wstring& RuntimeDir = *new std::wstring(L"D:\\VPN\\tools\\phase-b\\local");

std::atomic<std::uint8_t> StopRequested{0};
std::atomic<std::uint8_t> ConsoleEcho{0};
std::atomic<std::uint8_t> ShutdownAllowed{0};

std::uint32_t OwnerPid = 0;

void SetRuntimeDir(std::wstring text) {
  const size_t last = text.find_last_not_of(L'\0');
  if (last == std::wstring::npos) {
    return;
  }
  text.resize(last + 1);
  RuntimeDir = std::move(text);
}

}  // namespace vpn
