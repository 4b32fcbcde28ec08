// An account backend whose answers a test writes down. It stands in for the choice of the backend
// at link time, so this directory is a program of its own.
#ifndef TAVRIN_TESTS_UNIT_CONTROL_SCRIPTED_SCRIPTED_CONTROL_PLANE_H_
#define TAVRIN_TESTS_UNIT_CONTROL_SCRIPTED_SCRIPTED_CONTROL_PLANE_H_

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "src/account/control_plane.h"

namespace unit {

struct FetchAnswer {
  bool ok = true;
  std::vector<vpn::NodeInfo> nodes;
  std::wstring error;
  std::function<void()> meanwhile;  // runs inside the fetch
};

struct ControlPlaneScript {
  std::deque<FetchAnswer> answers;        // one for each fetch
  std::vector<std::wstring> runtimeDirs;  // what CreateControlPlane was given, in order
  int alive = 0;                          // objects that are not yet destroyed
};

// Of the test that runs.
ControlPlaneScript& TheScript();

// A usable node; the address tells nodes of one name apart.
vpn::NodeInfo Node(const std::wstring& name, const std::wstring& address);

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_CONTROL_SCRIPTED_SCRIPTED_CONTROL_PLANE_H_
