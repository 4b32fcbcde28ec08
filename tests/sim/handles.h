// The handle table: kernel objects, find handles, sockets, registry keys, service and internet
// handles, each with the call that opened it and the process that owns it. Values are never used
// twice, so that every use of a closed handle is seen.
#ifndef TAVRIN_TESTS_SIM_HANDLES_H_
#define TAVRIN_TESTS_SIM_HANDLES_H_

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/sim/core.h"

namespace sim {

enum class Family { kKernel, kFind, kSocket, kRegistry, kService, kInternet };

// Something that handles refer to. It lives until the last of them is closed, or longer where the
// machine itself still knows it.
class Object {
 public:
  virtual ~Object() = default;
  virtual Family family() const { return Family::kKernel; }
  // For logs and leak lists: `process xray.exe`, `job`, `socket`.
  virtual std::string Describe() const = 0;
  // WaitForSingleObject; nothing else than processes and threads can be waited for.
  virtual bool IsWaitable() const { return false; }
  virtual bool IsSignalled() const { return false; }
  // The object whose scheduled events end an infinite wait for this one.
  virtual const void* WaitKey() const { return this; }
  virtual void OnLastHandleClosed() {}

  int handleCount = 0;
};

// One thing that is open: for leak checks.
struct OpenItem {
  std::string kind;    // `process xray.exe`, `stream C:\run\a.log`, `MIB table`
  std::string origin;  // the call that opened it
  std::uint32_t processId = 0;
};

class Handles {
 public:
  using Value = std::uintptr_t;

  Handles(Core& core, std::vector<std::string>& violations)
      : core_(core), violations_(violations) {}

  Value Open(std::shared_ptr<Object> object, std::uint32_t processId, std::string origin,
             std::uint32_t access = 0);

  // The object behind an open handle of this family, or null. A value that is not open is noted as
  // a violation under the name of the call that used it.
  std::shared_ptr<Object> Find(Value value, Family family, const char* call);
  template <class T>
  std::shared_ptr<T> FindAs(Value value, Family family, const char* call) {
    return std::dynamic_pointer_cast<T>(Find(value, family, call));
  }
  std::uint32_t AccessOf(Value value) const;
  bool Close(Value value, Family family, const char* call);
  // What a process's end does: closes in the order of opening, and notes nothing.
  void CloseAllOf(std::uint32_t processId);

  std::string Describe(Value value) const;
  std::vector<OpenItem> Open() const;

 private:
  struct Entry {
    std::shared_ptr<Object> object;
    std::uint32_t processId;
    std::uint32_t access;
    std::string origin;
  };
  void Drop(std::map<Value, Entry>::iterator entry);
  void NoteMisuse(Value value, const char* call);

  Core& core_;
  std::vector<std::string>& violations_;
  Value next_ = 0x100;
  std::map<Value, Entry> open_;
  std::map<Value, std::string> closed_;  // what it was
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_HANDLES_H_
