// The product as one process of it: how its life begins, runs and ends. There are two of them in
// this program, since two processes of the service may live at a time and each has globals of its
// own: the second is the same sources once more, in a namespace of another name.
#ifndef TAVRIN_TESTS_SEQUENCE_PRODUCT_H_
#define TAVRIN_TESTS_SEQUENCE_PRODUCT_H_

#include <cstdint>

namespace sequence {

enum class Mode { kService, kConsole, kDaemon };

struct Product {
  // The globals as a new process finds them.
  void (*begin)(std::uint32_t ownerId);
  void (*run)(Mode mode);
  // What the process's exit does.
  void (*end)();
  void (*pressCtrlC)();
};

Product FirstProduct();
Product SecondProduct();

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_PRODUCT_H_
