// The account and its panel.
#include <windows.h>

#include <optional>

#include "client/account/masked.h"
#include "client/account/node_lookup.h"
#include "client/advice/advice.h"
#include "client/doctor/checks.h"
#include "client/doctor/file_look.h"
#include "client/doctor/panel_clock.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"
#include "src/panel/endpoints.h"
#include "src/panel/panel_client.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

constexpr std::int64_t kClockTolerance = 60;  // seconds

std::wstring PanelFile(const Patient& patient) {
  return patient.place.runtimeDir + L"\\" + kPanelFile;
}

std::wstring PanelAddress(const Patient& patient) {
  const std::wstring address = TrimEndSlashes(ReadPanelEndpoints(patient.place.runtimeDir).apiBase);
  return address.empty() ? TrimEndSlashes(PanelUrlFromEnvironment()) : address;
}

// Nothing when the file may decide what it decides. The service goes on without one that it can't
// read, and another user may read another file than the service.
std::optional<Finding> WrongWithPanelFile(const Patient& patient) {
  const std::wstring path = PanelFile(patient);
  const FileState state = LookAtFile(path, kMostSettings);
  if (state == FileState::kMissing || state == FileState::kReadable || state == FileState::kEmpty) {
    return std::nullopt;
  }
  if (state == FileState::kUnreadable) {
    return BadFile(path, state, {});
  }
  return Remark(path + L" " + WordsFor(state), L"put the panel's addresses there, or delete it");
}

// A file that the service would take as a whole, however large it is.
std::optional<Finding> HugeAccountFile(const Patient& patient) {
  for (const wchar_t* name : {kAccountFile, kCredentialFile}) {
    const std::wstring path = patient.place.runtimeDir + L"\\" + name;
    if (LookAtFile(path, kMostSettings) == FileState::kHuge) {
      return BadFile(path, FileState::kHuge, L"delete it, then sign in again");
    }
  }
  return std::nullopt;
}

std::wstring PlanText(const AccountSession& session) {
  if (!session.hasPlan) {
    return L"no plan";
  }
  return session.expiryDate.empty() ? L"plan without an end" : L"plan until " + session.expiryDate;
}

Finding JudgeClock(const std::wstring& host, std::int64_t ahead) {
  const std::int64_t seconds = ahead < 0 ? -ahead : ahead;
  if (seconds <= kClockTolerance) {
    return Good(host + L" answers, and the clocks agree");
  }
  return Remark(L"this machine's clock is " + DurationText(static_cast<std::uint64_t>(seconds)) +
                    (ahead > 0 ? L" ahead of " : L" behind ") + host,
                L"set the clock: certificates and the connection to the node depend on it");
}

}  // namespace

Finding CheckAccount(const Patient& patient) {
  if (const auto wrong = WrongWithPanelFile(patient)) {
    return Remark(L"which account counts can't be told: " + wrong->text, wrong->whatToDo);
  }
  if (const auto huge = HugeAccountFile(patient)) {
    return *huge;
  }
  const FetchedAccount account = FetchAccount(patient.place.runtimeDir);
  if (!account.isFetched) {
    return Problem(PlainLine(account.error), WhatToDo(account.error));
  }
  const AccountSession& session = account.session;
  const std::wstring text = MaskedEmail(session.email) + L", " + PlanText(session) + L", " +
                            CountText(session.nodes.size(), L"node", L"nodes");
  if (session.nodes.empty()) {
    return Problem(text, WhatToDo(L"没有可用节点"));
  }
  return Good(text);
}

Finding CheckPanel(const Patient& patient) {
  if (const auto wrong = WrongWithPanelFile(patient)) {
    return *wrong;
  }
  const std::wstring address = PanelAddress(patient);
  if (address.empty() && LookAtFile(PanelFile(patient), kMostSettings) != FileState::kMissing) {
    return Remark(
        PanelFile(patient) + L" names no apiBase, so the account is a file of this machine",
        L"put the panel's address there as apiBase, or delete the file");
  }
  if (address.empty()) {
    return Good(L"none configured; the account is a file of this machine");
  }
  const PanelReply reply = PanelClient{.base = address}.get(L"/api/v1/guest/comm/config");
  if (!reply.answered) {
    return Problem(PlainLine(reply.error), WhatToDo(reply.error));
  }
  std::int64_t ahead = 0;
  const std::wstring host = UrlHost(address);
  if (!SecondsAheadOfPanel(address, ahead)) {
    return Remark(host + L" answers, but not what time it is",
                  L"compare this machine's clock with another one");
  }
  return JudgeClock(host, ahead);
}

}  // namespace vpn
