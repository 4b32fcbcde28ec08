#include "client/doctor/checks.h"

#include <windows.h>

namespace vpn {
namespace {

constexpr std::uint64_t kPatience = 3000;  // milliseconds; a busy service is a finding too

}  // namespace

const std::vector<Check>& AllChecks() {
  static const std::vector<Check>& checks = *new std::vector<Check>{
      {"windows", L"Windows", CheckWindows},
      {"service", L"Service", CheckService},
      {"directory", L"Runtime directory", CheckDirectoryAccess},
      {"programs", L"Programs", CheckPrograms},
      {"configuration", L"Configuration", CheckConfiguration},
      {"account", L"Account", CheckAccount},
      {"panel", L"Panel", CheckPanel},
      {"route", L"Physical route", CheckPhysicalRoute},
      {"adapters", L"Other tunnels", CheckAdapters},
      {"userProxy", L"Your proxy", CheckUsersProxy},
      {"serviceProxy", L"Service's proxy", CheckServicesProxy},
      {"port", L"Port 17593", CheckPort},
      {"leftovers", L"Leftovers", CheckLeftovers},
      {"lastConnect", L"Last connect", CheckLastConnect},
  };
  return checks;
}

Patient ExaminePatient(const std::wstring& chosenRuntime) {
  Patient patient;
  patient.place = FindServicePlace(chosenRuntime);
  patient.installed = FindInstalledService();
  ExchangeHooks hooks;
  hooks.patience = kPatience;
  hooks.replyLimit = kPatience;
  std::string text;
  const ULONGLONG start = GetTickCount64();
  patient.end = Exchange(kStatusRequest, hooks, text);
  patient.answerTime = GetTickCount64() - start;
  if (patient.end == ExchangeEnd::kReplied && !ParseReply(text, patient.reply)) {
    patient.end = ExchangeEnd::kBroken;
  }
  patient.isSurelyAbsent = patient.end == ExchangeEnd::kAbsent && patient.installed.isReadable &&
                           CanListProcesses() && !IsServiceAlive();
  return patient;
}

}  // namespace vpn
