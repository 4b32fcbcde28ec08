#include "src/runtime/process_state.h"

#include <utility>

namespace vpn {

std::wstring& g_runtimeDir = *new std::wstring(L"D:\\VPN\\tools\\phase-b\\local");

std::atomic<std::uint8_t> g_stopRequested{0};
std::atomic<std::uint8_t> g_consoleEcho{0};
std::atomic<std::uint8_t> g_shutdownAllowed{0};

std::uint32_t g_ownerPid = 0;

void SetRuntimeDir(std::wstring text) {
  const size_t last = text.find_last_not_of(L'\0');
  if (last == std::wstring::npos) {
    return;
  }
  text.resize(last + 1);
  g_runtimeDir = std::move(text);
}

}  // namespace vpn
