#include "tests/sim/services.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "tests/sim/text.h"

namespace sim {
namespace {

constexpr std::chrono::seconds kPatience(30);  // real time; only a broken test waits so long

}  // namespace

std::vector<SERVICE_STATUS> Services::Reported() const {
  const MachineLock lock = core_.Lock();
  return reported_;
}

std::vector<std::string> Services::HandlersRegistered() const {
  const MachineLock lock = core_.Lock();
  return registered_;
}

bool Services::WaitForState(std::uint32_t state) {
  MachineLock lock = core_.Lock();
  return core_.changed.wait_for(lock, kPatience, [&] {
    return std::any_of(reported_.begin(), reported_.end(), [state](const SERVICE_STATUS& status) {
      return status.dwCurrentState == state;
    });
  });
}

std::optional<std::uint32_t> Services::Send(std::uint32_t control) {
  MachineLock lock = core_.Lock();
  if (dispatcher_ == 0 || handler_ == nullptr) {
    return std::nullopt;
  }
  const auto pending = std::make_shared<Control>();
  pending->code = control;
  controls_.push_back(pending);
  core_.changed.notify_all();
  core_.changed.wait_for(lock, kPatience, [&] { return pending->done || dispatcher_ == 0; });
  return pending->done ? std::optional(pending->result) : std::nullopt;
}

void Services::Install(ServiceRecord record) {
  const MachineLock lock = core_.Lock();
  const std::wstring key = Fold(Widen(record.name));
  installed_[key] = std::make_shared<ServiceRecord>(std::move(record));
}

std::optional<ServiceRecord> Services::Find(const std::string& name) const {
  const MachineLock lock = core_.Lock();
  const std::shared_ptr<ServiceRecord> record = FindRecord(Widen(name));
  return record ? std::optional(*record) : std::nullopt;
}

// The platform's dispatcher returns when its service has stopped. One whose main function returns
// without ever registering a handler would leave it waiting; here it returns then, too.
bool Services::IsOver() const {
  const bool stopped = !reported_.empty() && reported_.back().dwCurrentState == SERVICE_STOPPED;
  return mainReturned_ && (stopped || handler_ == nullptr);
}

void Services::Serve(MachineLock& lock, Control& control) {
  lock.unlock();  // the handler uses the platform
  const DWORD result = handler_(control.code, 0, nullptr, context_);
  lock.lock();
  control.result = result;
  control.done = true;
  core_.changed.notify_all();
}

void Services::Dispatch(LPSERVICE_MAIN_FUNCTIONW serviceMain, const std::wstring& name,
                        const std::function<void(std::function<void()>)>& startThread,
                        const std::function<bool()>& hasDied) {
  MachineLock lock = core_.Lock();
  const std::uint64_t self = ++lastDispatcher_;
  dispatcher_ = self;
  mainReturned_ = false;  // of an earlier process on this machine
  handler_ = nullptr;
  startThread([this, serviceMain, name, self] {
    std::wstring argument = name;
    LPWSTR arguments[] = {argument.data(), nullptr};
    serviceMain(1, arguments);
    const MachineLock inner = core_.Lock();
    mainReturned_ = mainReturned_ || dispatcher_ == self;
    core_.changed.notify_all();
  });
  while (!IsOver() && !hasDied()) {
    core_.changed.wait(lock, [&] { return IsOver() || hasDied() || !controls_.empty(); });
    if (!controls_.empty() && !hasDied()) {
      const std::shared_ptr<Control> control = controls_.front();
      controls_.pop_front();
      Serve(lock, *control);
    }
  }
  if (dispatcher_ == self) {
    dispatcher_ = 0;
  }
  core_.changed.notify_all();
}

bool Services::RegisterHandler(const std::wstring& name, LPHANDLER_FUNCTION_EX handler,
                               void* context) {
  const MachineLock lock = core_.Lock();
  if (dispatcher_ == 0) {
    return false;
  }
  registered_.push_back(Narrow(name));
  handler_ = handler;
  context_ = context;
  core_.changed.notify_all();
  return true;
}

bool Services::Report(const SERVICE_STATUS& status) {
  const MachineLock lock = core_.Lock();
  reported_.push_back(status);
  core_.changed.notify_all();
  return true;
}

std::shared_ptr<ServiceRecord> Services::FindRecord(const std::wstring& name) const {
  const MachineLock lock = core_.Lock();
  const auto found = installed_.find(Fold(name));
  return found == installed_.end() ? nullptr : found->second;
}

std::uint32_t Services::Create(std::shared_ptr<ServiceRecord> record) {
  const MachineLock lock = core_.Lock();
  std::shared_ptr<ServiceRecord>& slot = installed_[Fold(Widen(record->name))];
  if (slot) {
    return slot->markedForDelete ? ERROR_SERVICE_MARKED_FOR_DELETE : ERROR_SERVICE_EXISTS;
  }
  slot = std::move(record);
  return 0;
}

std::uint32_t Services::Stop(const std::shared_ptr<ServiceRecord>& record) {
  const MachineLock lock = core_.Lock();
  if (record->state == SERVICE_STOPPED) {
    return ERROR_SERVICE_NOT_ACTIVE;
  }
  if (record->state == SERVICE_STOP_PENDING) {
    return ERROR_SERVICE_CANNOT_ACCEPT_CTRL;
  }
  record->state = SERVICE_STOP_PENDING;
  if (!record->hangsOnStop) {
    clock_.After(record->stopTakes, [this, record] {
      record->state = SERVICE_STOPPED;
      Sweep();
    });
    clock_.Advance(0);
  }
  return 0;
}

void Services::Sweep() {
  const MachineLock lock = core_.Lock();
  std::erase_if(installed_, [](const auto& entry) {
    const ServiceRecord& record = *entry.second;
    return record.markedForDelete && record.state == SERVICE_STOPPED && record.openHandles == 0;
  });
}

}  // namespace sim
