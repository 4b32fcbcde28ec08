#include "client/account/device_identity.h"
#include "client/advice/advice.h"
#include "client/commands/account_answer.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/service/presence.h"

namespace vpn {
namespace {

struct Claim {
  std::int32_t used = 0;
  std::int32_t limit = 0;
};

Complaint ClaimDevice(const Backend& backend, Claim& claim) {
  const bool hasService = backend.isPanel() && !backend.panel.deviceApi.empty();
  const std::wstring identity = hasService ? DeviceIdentity(backend.runtimeDir) : std::wstring();
  std::wstring error;
  if (!MakeControlPlane(backend, backend.sessionPath())
           ->claimDevice(identity, claim.used, claim.limit, error)) {
    const bool isKept = !hasService || !identity.empty();
    return {error, isKept ? WhatToDo(error) : ElevationAdvice(backend.runtimeDir)};
  }
  if (hasService && claim.used <= 0) {  // a device that has been counted is at least one
    return {backend.panel.deviceApi + L" does not answer as a device service does",
            L"sign in to the network that you are in, or correct deviceApi in panel.json"};
  }
  return {};
}

}  // namespace

int RunDevice(const CommandLine& line, Screen& screen) {
  const Backend backend = FindBackend(FindServicePlace(line.runtimeDir).runtimeDir);
  Claim claim;
  if (const Complaint complaint =
          WhileAsking(screen, [&] { return ClaimDevice(backend, claim); })) {
    return FailAccount(complaint, line.json, screen);
  }
  if (line.json) {
    Json object = GoodJson();
    object["used"] = claim.used;
    object["limit"] = claim.limit;
    screen.out.write(JsonText(object));
  } else if (claim.limit <= 0) {
    screen.out.line(L"Devices are not counted here.");
  } else {
    screen.out.line(L"Devices in use: " + std::to_wstring(claim.used) + L" of " +
                    std::to_wstring(claim.limit) + L", this computer among them.");
  }
  return kExitDone;
}

}  // namespace vpn
