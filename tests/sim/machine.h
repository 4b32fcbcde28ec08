// One simulated Windows machine. The product's own sources run against it: every platform function
// that they call is answered by the machine that is installed at that moment.
//
//   sim::InstalledMachine machine;                        // or the fixture of fixture.h
//   machine->files.Put(L"C:\\run\\xray\\xray.exe");
//   machine->programs.On(L"xray.exe", sim::TypicalXray());
//   machine->faults.Fail("CreateProcessW", {.nth = 2, .code = ERROR_ACCESS_DENIED});
//   ... call the product ...
//   EXPECT_EQ(machine->processes.Alive(), std::vector<std::string>{"xray.exe"});
//   EXPECT_TRUE(machine->OpenHandles().empty());
//
// The parts have a header each that tells what they can do. Their functions take the machine's lock
// by themselves; where other threads run, a plain data member (the network,
// `services.administrator` and the like) is touched with `const auto lock = machine->Lock();` held.
// Text in paths is wide, other text is UTF-8.
//
// Time is virtual: it moves in Sleep, in timed waits and in clock.Advance, and never by itself. A
// wait with no time limit moves it only through events that can end this very wait (the scheduled
// end of the process, say); otherwise the thread really blocks until another thread acts.
#ifndef TAVRIN_TESTS_SIM_MACHINE_H_
#define TAVRIN_TESTS_SIM_MACHINE_H_

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/netmodel/network_model.h"
#include "tests/sim/call_log.h"
#include "tests/sim/clock.h"
#include "tests/sim/console.h"
#include "tests/sim/core.h"
#include "tests/sim/faults.h"
#include "tests/sim/files.h"
#include "tests/sim/handles.h"
#include "tests/sim/http_peer.h"
#include "tests/sim/pipes.h"
#include "tests/sim/processes.h"
#include "tests/sim/registry.h"
#include "tests/sim/resources.h"
#include "tests/sim/script.h"
#include "tests/sim/services.h"
#include "tests/sim/sockets.h"
#include "tests/sim/streams.h"

namespace sim {

struct ThreadObject;

// Oddities of the IP Helper that the network model does not know.
struct IpHelperOddities {
  std::uint64_t addressDelay = 0;  // virtual ms until a created address is seen
  // Routes that CreateIpForwardEntry2 takes with success and that never show up.
  std::function<bool(const netmodel::Route&)> swallowsRoute;
  std::set<std::uint64_t> nullTexts;     // LUIDs of adapters listed with null name and description
  std::set<std::uint64_t> withoutAlias;  // LUIDs for which ConvertInterfaceLuidToAlias fails
  bool nullTables = false;               // the table calls succeed and hand out null
  // LUIDs of adapters whose list of name servers begins with an entry that has no address.
  std::set<std::uint64_t> emptyServers;
};

struct ProcessRun {
  bool killed = false;  // by Faults::KillAt or ExitProcess; else the body came to its end
  std::uint32_t processId = 0;
};

class Machine {
 public:
  // A machine with TypicalNetwork, netsh.exe in the system directory, the product's executable at
  // `modulePath`, and 12:00 UTC on 2025-06-15.
  Machine();
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  // The installed machine; null when there is none.
  static std::shared_ptr<Machine> Current();
  static void Install(std::shared_ptr<Machine> machine);

  MachineLock Lock() { return core_.Lock(); }

  // Runs `body` as a process of its own on a thread of its own, and returns when it has ended or
  // was killed. A killed process leaves its thread where it stood, for ever; its handles are closed
  // in the order of opening, so a kill-on-close job takes the children along. Handles that a body
  // left open at its regular end are violations, and closed then.
  //
  // The product's globals are those of the test program and survive the kill: a test that kills
  // uses objects of its own inside `body`.
  ProcessRun RunProcess(std::function<void()> body);

  // Everything that the product has open: handles, streams, tables, unbalanced WSAStartups, as
  // `process xray.exe from CreateProcessW`.
  std::vector<std::string> OpenHandles() const;
  // Uses of closed handles and other mistakes that the platform would have hidden.
  std::vector<std::string> Violations() const;
  void ForgetViolations();
  // Waits (in real time, 20 seconds) for every thread that was started since the machine was made,
  // and gives the number of those that did not end. Threads of killed processes don't count.
  size_t WaitForThreads() const;

  // Puts `xray\xray.exe`, `tun2socks\tun2socks-windows-amd64.exe` with wintun.dll, and the typical
  // scripts for both in place below a runtime directory.
  void PutHelpers(const std::wstring& runtimeDir);

 private:
  Core core_;
  std::vector<std::string> violations_;

 public:
  Clock clock{core_};
  Faults faults{core_};
  CallLog calls{core_};
  Environment environment{core_};
  Registry registry{core_};
  Files files{core_};
  netmodel::Network network = netmodel::TypicalNetwork();
  IpHelperOddities ipHelper;
  Listeners listeners{core_};
  ConnectPlans connects{core_};
  Names names{core_};
  HttpPeer http{core_};
  Programs programs{core_};
  Processes processes{core_, clock, network, listeners};
  Handles handles{core_, violations_};
  Resources resources{core_, violations_};
  Streams streams{core_, files, violations_};
  Console console{core_, streams};
  Pipes pipes{core_};
  Services services{core_, clock};
  std::uint32_t windowsBuild = 19045;  // of version 10.0
  std::wstring modulePath = L"C:\\Program Files\\Tavrin\\TavrinService.exe";

  // For the platform's calls --------------------------------------------------------------------
  Core& core() { return core_; }
  // The process that the calling thread belongs to: a thread that is new here joins the one that
  // runs in the foreground.
  std::shared_ptr<Process> ThisProcess();
  void BindThisThread(std::uint32_t processId);
  // The process dies on the spot.
  void Crash(const std::shared_ptr<Process>& process, std::uint32_t exitCode = 1);
  void AddViolation(std::string text);
  std::map<std::uint32_t, int> winsockStarts;  // by process
  std::shared_ptr<ThreadObject> newestThread;  // that CreateThread made

 private:
  std::shared_ptr<Process> AddOwnProcess();
  // What is open and belongs to one process, or to any (0).
  std::vector<std::string> OpenHandlesOf(std::uint32_t processId) const;
  void CloseEverythingOf(std::uint32_t processId);
  void Finish(const std::shared_ptr<Process>& process);

  const std::uint64_t serial_;
  const std::set<int> threadsAtStart_;
  std::uint32_t foreground_ = 0;
};

// Installs a fresh machine for its own lifetime.
class InstalledMachine {
 public:
  InstalledMachine();
  ~InstalledMachine();
  InstalledMachine(const InstalledMachine&) = delete;
  InstalledMachine& operator=(const InstalledMachine&) = delete;

  Machine* operator->() const { return machine_.get(); }
  Machine& operator*() const { return *machine_; }

 private:
  std::shared_ptr<Machine> machine_;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_MACHINE_H_
