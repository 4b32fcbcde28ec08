// The simulated machine on which a sequence runs: carries out the events.
#ifndef TAVRIN_TESTS_SEQUENCE_WORLD_H_
#define TAVRIN_TESTS_SEQUENCE_WORLD_H_

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "tests/fault/scene.h"
#include "tests/sequence/conditions.h"
#include "tests/sequence/events.h"
#include "tests/sequence/service.h"

namespace sequence {

class World {
 public:
  World();

  sim::Machine& machine() { return *stage_.machine; }
  const netmodel::Network& before() const { return stage_.before; }
  // The client's reply; empty for an event without one, `none` when the connection was closed
  // without a reply, `nobody` when no server listened.
  std::string Carry(const Event& event);
  // False when a process neither ended nor waits for a client, after 90 seconds.
  bool ComeToRest() { return services_.ComeToRest(); }
  // Connects or disconnects while calls fail, or while something happens in the middle of it.
  std::string CarryDisturbed(const Event& event);
  std::deque<size_t> Turns() { return services_.Turns(); }
  // Paths of the files that the service may only read and that are not as they were put there.
  std::vector<std::string> ChangedFiles();

 private:
  void PutFiles();
  void PutFile(const wchar_t* name, const std::string& content);
  void PutAccount();
  void PutScripts();
  void SetUpPanel();
  void SetConditions(const std::string& name);
  void SetPort(bool taken);
  void EndChildren(const std::string& value);
  void ChangeTheNetwork(const Event& event);
  std::uint32_t NewOwner();
  void StartService(const std::string& mode, size_t slot);
  std::string Exchange(const std::string& request);
  std::string SendFrame(const std::string& value);
  std::string LeaveBeforeReply(const std::string& op);
  void DoInTheMiddle(const std::string& what);

  fault::Stage stage_;
  Conditions conditions_;
  Services services_;
  bool portIsForeign_ = false;
  std::uint32_t nextOwner_ = 900;
  std::vector<std::pair<std::wstring, std::string>> inputs_;  // as they were put there
};

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_WORLD_H_
