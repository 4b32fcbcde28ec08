#include "tests/unit/control/scripted/scripted_control_plane.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "src/account/control_plane_choice.h"
#include "src/account/local_control_plane.h"

namespace unit {
namespace {

class ScriptedControlPlane : public vpn::LocalControlPlane {
 public:
  ScriptedControlPlane() : LocalControlPlane(L"", L"") { ++TheScript().alive; }
  ~ScriptedControlPlane() override { --TheScript().alive; }
  ScriptedControlPlane(const ScriptedControlPlane&) = delete;
  ScriptedControlPlane& operator=(const ScriptedControlPlane&) = delete;

  bool fetchAccount(vpn::AccountSession& session, std::wstring& error) override {
    if (TheScript().answers.empty()) {
      ADD_FAILURE() << "a fetch that the test did not expect";
      return false;
    }
    const FetchAnswer answer = std::move(TheScript().answers.front());
    TheScript().answers.pop_front();
    if (answer.meanwhile) {
      answer.meanwhile();
    }
    session = vpn::AccountSession();
    session.nodes = answer.nodes;
    if (!answer.error.empty()) {
      error = answer.error;
    }
    return answer.ok;
  }
};

}  // namespace

ControlPlaneScript& TheScript() {
  static ControlPlaneScript& script = *new ControlPlaneScript;
  return script;
}

vpn::NodeInfo Node(const std::wstring& name, const std::wstring& address) {
  vpn::NodeInfo node;
  node.name = name;
  node.address = address;
  node.port = 443;
  node.uuid = L"2f9f0a3c-0000-4000-8000-000000000001";
  return node;
}

}  // namespace unit

namespace vpn {

std::unique_ptr<ControlPlane> CreateControlPlane(const std::wstring& runtimeDir) {
  unit::TheScript().runtimeDirs.push_back(runtimeDir);
  return std::make_unique<unit::ScriptedControlPlane>();
}

}  // namespace vpn
