#include "client/account/backend.h"

#include "client/advice/advice.h"
#include "src/account/local_control_plane.h"
#include "src/account/xboard_control_plane.h"
#include "src/common/files.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

constexpr char kBlanks[] = " \t\r\n";

// What came instead of a panel's reply.
std::wstring KindOfReply(const std::string& body) {
  const size_t first = body.find_first_not_of(kBlanks);
  if (first == std::string::npos) {
    return L"nothing";
  }
  if (body[first] == '<') {
    return L"a web page";
  }
  const bool isCut = body[first] == '{' && body[body.find_last_not_of(kBlanks)] != '}';
  return isCut ? L"a text that breaks off" : L"something else";
}

}  // namespace

std::wstring Backend::sessionPath() const {
  return runtimeDir + L'\\' + kCredentialFile;
}

Backend FindBackend(const std::wstring& runtimeDir) {
  Backend backend{runtimeDir, ReadPanelEndpoints(runtimeDir)};
  backend.panel.apiBase = TrimEndSlashes(backend.panel.apiBase);
  if (!backend.isPanel()) {
    backend.panel = {};
    backend.panel.apiBase = TrimEndSlashes(PanelUrlFromEnvironment());
  }
  return backend;
}

std::unique_ptr<ControlPlane> MakeControlPlane(const Backend& backend,
                                               const std::wstring& credentialPath) {
  const PanelEndpoints& panel = backend.panel;
  if (backend.isPanel()) {
    return std::make_unique<XboardControlPlane>(panel.apiBase, credentialPath, panel.deviceApi,
                                                panel.inviteBase);
  }
  return std::make_unique<LocalControlPlane>(backend.runtimeDir + L'\\' + kAccountFile,
                                             credentialPath);
}

PanelClient MakePanelClient(const Backend& backend, const std::wstring& credentialPath) {
  std::string stored;
  (void)ReadFileBytes(credentialPath, stored);  // without it: signed out
  return {.base = backend.panel.apiBase, .credential = Utf8ToWide(JsonString(stored, "auth_data"))};
}

bool IsPanelReply(const std::string& body, const std::string& key) {
  const size_t first = body.find_first_not_of(kBlanks);
  return first != std::string::npos && body[first] == '{' &&
         body[body.find_last_not_of(kBlanks)] == '}' &&
         body.find('"' + key + '"') != std::string::npos;
}

Complaint JudgeReply(const Backend& backend, const PanelReply& reply, const std::string& key) {
  if (!reply.ok()) {
    return {reply.error, WhatToDo(reply.error)};
  }
  if (IsPanelReply(reply.body, key)) {
    return {};
  }
  return {backend.panel.apiBase + L" answers with " + KindOfReply(reply.body) +
              L", not as a panel does",
          L"sign in to the network that you are in, or correct apiBase in panel.json"};
}

Complaint LookAtAccount(const Backend& backend, const std::wstring& credentialPath) {
  if (!backend.isPanel()) {
    return {};
  }
  const PanelClient panel = MakePanelClient(backend, credentialPath);
  return JudgeReply(backend, panel.get(L"/api/v1/user/getSubscribe"), "uuid");
}

}  // namespace vpn
