#include "client/commands/account_run.h"

#include <windows.h>

#include "client/advice/advice.h"
#include "client/commands/asking.h"
#include "client/exit_codes.h"
#include "client/service/presence.h"
#include "client/text/display_width.h"

namespace vpn {

AccountRun::AccountRun(const CommandLine& theLine, Screen& theScreen, const wchar_t* ending)
    : line(theLine),
      screen(theScreen),
      backend(FindBackend(FindServicePlace(theLine.runtimeDir).runtimeDir)),
      credentialPath(backend.sessionPath() + ending),
      plane(MakeControlPlane(backend, credentialPath)),
      moving_(theScreen.err) {}

AccountRun::~AccountRun() = default;

void AccountRun::showWaiting() {
  moving_.show(backend.isPanel() ? L"The panel is being asked …" : L"The account is being read …");
}

int AccountRun::fail() {
  if (!complaint) {
    complaint = {error, WhatToDo(error)};
  }
  if (line.json) {
    Json object = NewJson();
    PutFlag(object, "ok", false);
    PutText(object, "error", complaint.text);
    screen.out.write(JsonText(object));
  }
  TellRefusal(complaint.text, complaint.whatToDo, screen);
  return kExitRefused;
}

int AccountRun::fail(std::wstring text, std::wstring whatToDo) {
  complaint = {std::move(text), std::move(whatToDo)};
  return fail();
}

int AccountRun::failWriting(std::wstring text) {
  const std::wstring& directory = backend.runtimeDir;
  if (GetFileAttributesW(directory.c_str()) == INVALID_FILE_ATTRIBUTES) {
    return fail(std::move(text),
                L"name the service's runtime directory with --runtime: there is no " + directory);
  }
  return fail(std::move(text),
              L"run this from an elevated console: this user may not write to " + directory);
}

int AccountRun::wrongUse(const std::wstring& sentence) {
  screen.err.line(L"tavrinctl: " + PlainLine(sentence));
  return kExitUsage;
}

int AccountRun::interrupted() {
  screen.err.line(L"Interrupted.");
  return kExitInterrupted;
}

int AccountRun::done(const Json& answer) {
  if (line.json) {
    screen.out.write(JsonText(answer));
  }
  return kExitDone;
}

Json GoodJson() {
  Json object = NewJson();
  PutFlag(object, "ok", true);
  return object;
}

std::wstring PlanText(const AccountSession& session) {
  if (!session.hasPlan && !session.expired) {
    return L"none";
  }
  const std::wstring name = PlainLine(session.planName);
  std::wstring end = L"without an end";
  if (!session.expiryDate.empty()) {
    end = (session.expired ? L"ran out on " : L"until ") + session.expiryDate;
  }
  return name.empty() ? end : name + L", " + end;
}

void PutAccount(Json& object, const AccountSession& session) {
  PutText(object, "email", session.email);
  Json& plan = PutObject(object, "plan");
  if (session.hasPlan || session.expired) {
    PutNumber(plan, "id", session.planId);
    PutText(plan, "name", session.planName);
    PutText(plan, "expires", session.expiryDate);
    PutFlag(plan, "expired", session.expired);
  }
  Json& traffic = PutObject(object, "traffic");
  PutNumber(traffic, "used", session.transferUsed);
  PutNumber(traffic, "total", session.transferEnable);
  Json& devices = PutObject(object, "devices");
  PutNumber(devices, "used", session.deviceUsed);
  PutNumber(devices, "limit", session.deviceLimit);
  PutNumber(object, "nodes", static_cast<std::int64_t>(session.nodes.size()));
}

}  // namespace vpn
