// A file that is there as a whole, or not at all.
#ifndef TAVRIN_CLIENT_REPORT_WHOLE_FILE_H_
#define TAVRIN_CLIENT_REPORT_WHOLE_FILE_H_

#include <string>
#include <string_view>

namespace vpn {

// Written under another name, `path` with ".part", and given its own at the end. False leaves what
// was there before, and nothing half made.
bool WriteWholeFile(const std::wstring& path, std::string_view bytes);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_REPORT_WHOLE_FILE_H_
