// Ctrl+C: the program ends with an exit code of its own, or a command notes it, so that it can say
// how things stand before it ends.
#ifndef TAVRIN_CLIENT_CONSOLE_INTERRUPT_H_
#define TAVRIN_CLIENT_CONSOLE_INTERRUPT_H_

namespace vpn {

// While an object lives, Ctrl+C ends the program with the exit code for it and the cursor as it
// was. The program makes one.
class InterruptGuard {
 public:
  InterruptGuard();
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;
};

// While an object lives too, the first Ctrl+C is noted, and only a second one ends the program.
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
