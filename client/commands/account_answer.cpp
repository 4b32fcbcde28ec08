#include "client/commands/account_answer.h"

#include <windows.h>

#include "client/advice/advice.h"
#include "client/commands/asking.h"
#include "client/exit_codes.h"
#include "client/text/display_width.h"

namespace vpn {

Json GoodJson() {
  Json object = NewJson();
  object["ok"] = true;
  return object;
}

int FailAccount(const Complaint& complaint, bool json, Screen& screen) {
  if (json) {
    Json object = NewJson();
    object["ok"] = false;
    object["error"] = JsonValue(complaint.text);
    screen.out.write(JsonText(object));
  }
  TellRefusal(complaint.text, complaint.whatToDo, screen);
  return kExitRefused;
}

int FailAccount(const std::wstring& error, bool json, Screen& screen) {
  return FailAccount(Complaint{error, WhatToDo(error)}, json, screen);
}

int WrongUse(const std::wstring& sentence, Screen& screen) {
  screen.err.line(L"tavrinctl: " + PlainLine(sentence));
  return kExitUsage;
}

int TellInterrupted(Screen& screen) {
  screen.err.line(L"Interrupted.");
  return kExitInterrupted;
}

std::wstring ElevationAdvice(const std::wstring& runtimeDir) {
  if (GetFileAttributesW(runtimeDir.c_str()) == INVALID_FILE_ATTRIBUTES) {
    return L"name the service's runtime directory with --runtime: there is no " + runtimeDir;
  }
  return L"run this from an elevated console: this user may not write to " + runtimeDir;
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

void AddAccount(const AccountSession& session, Json& object) {
  object["email"] = JsonValue(session.email);
  Json& plan = object["plan"];
  if (session.hasPlan || session.expired) {
    plan["id"] = session.planId;
    plan["name"] = JsonValue(session.planName);
    plan["expires"] = JsonValue(session.expiryDate);
    plan["expired"] = session.expired;
  }
  object["traffic"]["used"] = session.transferUsed;
  object["traffic"]["total"] = session.transferEnable;
  object["devices"]["used"] = session.deviceUsed;
  object["devices"]["limit"] = session.deviceLimit;
  object["nodes"] = session.nodes.size();
}

}  // namespace vpn
