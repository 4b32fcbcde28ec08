// The part of the reference model that says what starting and stopping a tunnel does to a machine.
#ifndef TAVRIN_TESTS_SEQUENCE_MODEL_TUNNEL_H_
#define TAVRIN_TESTS_SEQUENCE_MODEL_TUNNEL_H_

#include <string>

#include "tests/sequence/known_machine.h"

namespace sequence {

// The interface that the tunnel's own packets leave by, and its gateway. False when there is none.
bool FindPhysical(const KnownMachine& machine, std::string* alias, std::string* gateway);

// What one service remembers of its tunnel.
struct ModelTunnel {
  // The text of the failure; empty when the tunnel is up.
  std::string Start(KnownMachine& machine, const Node& to);
  void Stop(KnownMachine& machine);
  bool Runs() const;  // both children do
  Lines Handles() const;

  bool changed = false;  // the network is
  bool fromPanel = false;
  ChildPointer xray, tun;
  std::string tunAlias;

 private:
  std::string BringUp(KnownMachine& machine);
  std::string StartXray(KnownMachine& machine);
  std::string StartTun(KnownMachine& machine);
  void Pin(KnownMachine& machine, const std::string& address);

  bool hasJob_ = false;
  std::string alias_, gateway_, node_;
  Lines pins_;
};

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_MODEL_TUNNEL_H_
