#include "client/account/device_identity.h"
#include "client/commands/account_run.h"
#include "client/commands/commands.h"

namespace vpn {

int RunDevice(const CommandLine& line, Screen& screen) {
  AccountRun run(line, screen);
  const std::wstring& service = run.backend.panel.deviceApi;
  const std::wstring identity =
      service.empty() ? std::wstring() : DeviceIdentity(run.backend.runtimeDir);
  std::int32_t used = 0;
  std::int32_t limit = 0;
  if (!run.ask([&](ControlPlane& plane, std::wstring& error) {
        return plane.claimDevice(identity, used, limit, error);
      })) {
    return !service.empty() && identity.empty() ? run.failWriting(run.error) : run.fail();
  }
  if (!service.empty() && used <= 0) {  // a device that has been counted is at least one
    return run.fail(service + L" does not answer as a device service does",
                    L"sign in to the network that you are in, or correct deviceApi in panel.json");
  }
  if (!line.json) {
    screen.out.line(limit <= 0 ? L"Devices are not counted here."
                               : L"Devices in use: " + std::to_wstring(used) + L" of " +
                                     std::to_wstring(limit) + L", this computer among them.");
  }
  Json answer = GoodJson();
  PutNumber(answer, "used", used);
  PutNumber(answer, "limit", limit);
  return run.done(answer);
}

}  // namespace vpn
