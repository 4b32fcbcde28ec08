// A host name that is looked up on a thread of its own, for which nobody has to wait: the
// platform's resolver takes as long as it likes, and can't be interrupted.
#ifndef TAVRIN_CLIENT_LATENCY_NAME_LOOKUP_H_
#define TAVRIN_CLIENT_LATENCY_NAME_LOOKUP_H_

#include <windows.h>

#include <memory>
#include <string>

#include "src/common/unique_handle.h"

namespace vpn {

class NameLookUp {
 public:
  // Begins at once.
  explicit NameLookUp(const std::wstring& host);

  // True as soon as it is over; waits for that, at most for so many milliseconds.
  bool isDone(DWORD patience = 0) const;

  // The first IPv4 address, empty for a name that has none. Only once it is over.
  const std::wstring& address() const { return answer_->address; }

 private:
  // Outlives whichever goes first, this object or the thread.
  struct Answer {
    std::wstring host;
    std::wstring address;
  };
  static void lookUp(Answer& answer);
  static DWORD WINAPI lookUpThread(void* answer);

  std::shared_ptr<Answer> answer_;
  KernelHandle thread_;
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_LATENCY_NAME_LOOKUP_H_
