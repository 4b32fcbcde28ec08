#include "client/latency/name_lookup.h"

#include <utility>
#include <vector>

#include "src/net/host_resolve.h"

namespace vpn {

NameLookUp::NameLookUp(const std::wstring& host) : answer_(std::make_shared<Answer>()) {
  answer_->host = host;
  auto shared = std::make_unique<std::shared_ptr<Answer>>(answer_);
  thread_ = KernelHandle(CreateThread(nullptr, 0, lookUpThread, shared.get(), 0, nullptr));
  if (thread_) {
    (void)shared.release();  // the thread's now
  } else {
    lookUp(*answer_);
  }
}

bool NameLookUp::isDone(DWORD patience) const {
  return !thread_ || WaitForSingleObject(thread_.get(), patience) != WAIT_TIMEOUT;
}

void NameLookUp::lookUp(Answer& answer) {
  std::vector<std::wstring> addresses = ResolveHostIpv4(answer.host);
  if (!addresses.empty()) {
    answer.address = std::move(addresses.front());
  }
}

DWORD WINAPI NameLookUp::lookUpThread(void* answer) {
  const std::unique_ptr<std::shared_ptr<Answer>> shared(
      static_cast<std::shared_ptr<Answer>*>(answer));
  lookUp(**shared);
  return 0;
}

}  // namespace vpn
