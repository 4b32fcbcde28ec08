// Frames on the control pipe: 4 bytes of payload length, unsigned little-endian, then the payload.
// All input and output is synchronous and has no time-out.
#ifndef TAVRIN_SRC_CONTROL_FRAME_H_
#define TAVRIN_SRC_CONTROL_FRAME_H_

#include <windows.h>

#include <cstddef>
#include <string>

namespace vpn {

inline constexpr std::size_t kMaxPayload = 65536;  // bytes, both directions

// False for a null pipe, a failed or empty read, or a length of 0 or above `kMaxPayload`; `text` is
// undefined then. A refused length leaves its payload unread and the last error as it stood.
bool ReadFrame(HANDLE pipe, std::string& text);

// False for a null pipe, a failed write, or a text above `kMaxPayload`, of which nothing is written
// and for which the last error is left as it stood. Returns once the client has read everything.
bool WriteFrame(HANDLE pipe, const std::string& text);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_FRAME_H_
