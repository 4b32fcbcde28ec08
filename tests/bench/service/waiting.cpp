// An empty program that stays, so that its memory can be looked at. With any argument it has first
// loaded the stand-in for the network and run a thread to its end, as the service has.
#include <windows.h>

namespace {

DWORD WINAPI End(void* /*unused*/) {
  return 0;
}

void LeaveWhatWineKeeps() {
  LoadLibraryW(L"iphlpapi.dll");
  const HANDLE thread = CreateThread(nullptr, 0, End, nullptr, 0, nullptr);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
}

}  // namespace

int wmain(int argc, wchar_t** /*argv*/) {
  if (argc > 1) {
    LeaveWhatWineKeeps();
  }
  Sleep(INFINITE);
  return 0;
}
