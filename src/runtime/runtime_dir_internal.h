// Parts of runtime_dir.cpp, for its tests.
#ifndef TAVRIN_SRC_RUNTIME_RUNTIME_DIR_INTERNAL_H_
#define TAVRIN_SRC_RUNTIME_RUNTIME_DIR_INTERNAL_H_

#include <string>

namespace vpn {

// True when "\xray\xray.exe" or "\xray.exe" below `directory` is a file. It is not opened.
bool IsRuntimeDir(const std::wstring& directory);

// Directory of the running executable, without a separator at its end; "." when unknown.
std::wstring ModuleDirectory();

}  // namespace vpn

#endif  // TAVRIN_SRC_RUNTIME_RUNTIME_DIR_INTERNAL_H_
