#include <string>
#include <vector>

#include "client/commands/commands.h"

extern "C" int wmain(int argc, wchar_t** argv) {
  return vpn::RunClient(std::vector<std::wstring>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
