// The service manager: the dispatcher side, with the controls that a test delivers, and the table
// of installed services.
#ifndef TAVRIN_TESTS_SIM_SERVICES_H_
#define TAVRIN_TESTS_SIM_SERVICES_H_

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/sim/clock.h"
#include "tests/sim/core.h"
#include "tests/sim/handles.h"

#include <win/services.h>

namespace sim {

struct ServiceRecord {
  std::string name{};
  std::string displayName{};
  std::string description{};
  std::string binaryPath{};
  std::uint32_t type = 0;
  std::uint32_t startType = 0;
  std::uint32_t errorControl = 0;
  std::uint32_t state = SERVICE_STOPPED;
  bool hasOtherSettings = false;  // a group, a tag, dependencies, an account or a password
  bool markedForDelete = false;
  int openHandles = 0;
  // How it behaves:
  std::uint32_t startError = 0;  // StartServiceW fails with this
  std::uint64_t stopTakes = 0;   // virtual milliseconds
  bool hangsOnStop = false;      // stays in the pending state for ever
};

class Services {
 public:
  Services(Core& core, Clock& clock) : core_(core), clock_(clock) {}

  // The dispatcher side ---------------------------------------------------------------------------
  // By default nobody stands behind the process, and the dispatcher fails with 1063.
  bool startedByManager = false;
  std::uint32_t dispatcherError = ERROR_FAILED_SERVICE_CONTROLLER_CONNECT;
  // Everything that was reported, in order.
  std::vector<SERVICE_STATUS> Reported() const;
  std::vector<std::string> HandlersRegistered() const;  // service names
  // Waits (in real time) until this state was reported; false after 30 seconds.
  bool WaitForState(std::uint32_t state);
  // Runs the control handler on the dispatcher's thread and gives its result; nothing when no
  // service runs, or after 30 seconds.
  std::optional<std::uint32_t> Send(std::uint32_t control);

  // The manager side ------------------------------------------------------------------------------
  bool administrator = true;  // else every OpenSCManagerW but for SC_MANAGER_CONNECT is refused
  void Install(ServiceRecord record);
  std::optional<ServiceRecord> Find(const std::string& name) const;

  // For the platform's calls ----------------------------------------------------------------------
  // Returns when the service has stopped or the process has died.
  void Dispatch(LPSERVICE_MAIN_FUNCTIONW serviceMain, const std::wstring& name,
                const std::function<void(std::function<void()>)>& startThread,
                const std::function<bool()>& hasDied);
  bool RegisterHandler(const std::wstring& name, LPHANDLER_FUNCTION_EX handler, void* context);
  bool Report(const SERVICE_STATUS& status);
  std::shared_ptr<ServiceRecord> FindRecord(const std::wstring& name) const;
  std::uint32_t Create(std::shared_ptr<ServiceRecord> record);
  std::uint32_t Stop(const std::shared_ptr<ServiceRecord>& record);
  // Drops a record that is marked for deletion, has stopped and is no longer open.
  void Sweep();

 private:
  struct Control {
    std::uint32_t code;
    bool done = false;
    std::uint32_t result = 0;
  };
  bool IsOver() const;
  void Serve(MachineLock& lock, Control& control);

  Core& core_;
  Clock& clock_;
  // Which dispatcher runs; 0 is none. One of a process that has died may end behind the next one's
  // start.
  std::uint64_t dispatcher_ = 0;
  std::uint64_t lastDispatcher_ = 0;
  bool mainReturned_ = false;
  LPHANDLER_FUNCTION_EX handler_ = nullptr;
  void* context_ = nullptr;
  std::deque<std::shared_ptr<Control>> controls_;
  std::vector<SERVICE_STATUS> reported_;
  std::vector<std::string> registered_;
  std::map<std::wstring, std::shared_ptr<ServiceRecord>> installed_;
};

// What SC_HANDLEs refer to.
struct ServiceManagerObject : Object {
  Family family() const override { return Family::kService; }
  std::string Describe() const override { return "service manager"; }
};

struct ServiceObject : Object {
  Family family() const override { return Family::kService; }
  std::string Describe() const override { return "service " + record->name; }
  void OnLastHandleClosed() override {
    --record->openHandles;
    services->Sweep();
  }
  std::shared_ptr<ServiceRecord> record;
  Services* services = nullptr;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_SERVICES_H_
