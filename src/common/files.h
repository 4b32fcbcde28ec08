// Whole files in binary mode. Other processes may read and write them meanwhile.
#ifndef TAVRIN_SRC_COMMON_FILES_H_
#define TAVRIN_SRC_COMMON_FILES_H_

#include <string>
#include <string_view>

namespace vpn {

// False when the file can't be opened; `text` is touched only on success. An empty file is a
// success with an empty text.
bool ReadFileBytes(const std::wstring& path, std::string& text);

// Creates or truncates the file and writes `bytes`. Only the opening decides the result; whether
// the write itself worked is not tested, by design.
bool WriteFileBytes(const std::wstring& path, std::string_view bytes);

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_FILES_H_
