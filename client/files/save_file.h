// A file that is written whole or not at all.
#ifndef TAVRIN_CLIENT_FILES_SAVE_FILE_H_
#define TAVRIN_CLIENT_FILES_SAVE_FILE_H_

#include <string>
#include <string_view>

namespace vpn {

// Replaces what stands at `path`. False when not every byte could be written: then that is as it
// was, and nothing is left beside it.
bool SaveFile(const std::wstring& path, std::string_view bytes);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_FILES_SAVE_FILE_H_
