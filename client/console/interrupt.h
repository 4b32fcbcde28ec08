// Ctrl+C: noted, so that a command can say how things stand before it ends.
#ifndef TAVRIN_CLIENT_CONSOLE_INTERRUPT_H_
#define TAVRIN_CLIENT_CONSOLE_INTERRUPT_H_

namespace vpn {

// While an object lives, the first Ctrl+C is noted and a second one ends the program at once.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;

  bool wasInterrupted() const;
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_CONSOLE_INTERRUPT_H_
