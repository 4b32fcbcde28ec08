// The last line of a console while something is under way.
#ifndef TAVRIN_CLIENT_CONSOLE_MOVING_LINE_H_
#define TAVRIN_CLIENT_CONSOLE_MOVING_LINE_H_

#include <cstdint>
#include <string>

#include "client/console/output.h"

namespace vpn {

// Draws nothing at all where the output is no console. The line is cleared at the latest with this
// object.
class MovingLine {
 public:
  explicit MovingLine(Output& output) : output_(output) {}
  MovingLine(const MovingLine&) = delete;
  MovingLine& operator=(const MovingLine&) = delete;
  ~MovingLine() { clear(); }

  // In the place of what stood there, cut to the window. Should hold no wide characters: consoles
  // differ in how many columns they count for them.
  void show(const std::wstring& text);

  // Leaves the cursor at the start of an empty line.
  void clear();

 private:
  Output& output_;
  std::wstring shown_;
};

// A turning wheel for the start of a moving line.
wchar_t WheelAt(std::uint64_t milliseconds);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_CONSOLE_MOVING_LINE_H_
