// Parts of frame.cpp, for its tests.
#ifndef TAVRIN_SRC_CONTROL_FRAME_INTERNAL_H_
#define TAVRIN_SRC_CONTROL_FRAME_INTERNAL_H_

#include <windows.h>

#include <cstddef>

namespace vpn {

// Exactly `size` bytes, over as many calls as it takes. A read of 0 bytes fails; a write of 0 bytes
// fails with ERROR_WRITE_FAULT. A size of 0 succeeds at once.
bool ReadExact(HANDLE pipe, void* buffer, std::size_t size);
bool WriteExact(HANDLE pipe, const void* buffer, std::size_t size);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_FRAME_INTERNAL_H_
