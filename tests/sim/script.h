// How a child program behaves. Times are virtual milliseconds since the child runs, which is since
// ResumeThread for one that was created suspended.
#ifndef TAVRIN_TESTS_SIM_SCRIPT_H_
#define TAVRIN_TESTS_SIM_SCRIPT_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/netmodel/network_model.h"
#include "tests/sim/core.h"

namespace sim {

struct Process;

// The life of a Wintun adapter: it appears Down, perhaps under a default name, is renamed, goes up,
// and vanishes with its process.
struct AdapterPlan {
  netmodel::Adapter adapter;  // index, LUID and GUID are made at the start of each child
  std::string firstName;      // empty: it has its own name from the start
  std::uint64_t appearsAfter = 600;
  std::uint64_t renamedAfter = 700;
  std::optional<std::uint64_t> upAfter = 900;  // none: it never goes up
  std::uint64_t vanishesAfter = 0;             // behind the end of the process
};

// "tavrin" with the description "tun2socks Tunnel", up after 900 ms.
AdapterPlan TavrinAdapter();

class Script {
 public:
  // CreateProcessW fails with this code.
  Script& FailsToStart(std::uint32_t error) { return Set(createError, error); }
  Script& Exits(std::uint32_t code, std::uint64_t after);
  // Accepts connections on a loopback port. Where the port is taken, the child exits with
  // 0xFFFFFFFF at that moment, as Xray does.
  Script& Listens(std::uint16_t port, std::uint64_t after);
  Script& BringsAdapter(AdapterPlan plan) { return Set(adapter, std::move(plan)); }
  // Writes on its standard output.
  Script& Prints(std::string text, std::uint64_t after = 1);
  // Carries out its command line on the network as netsh does after so long, and exits with netsh's
  // code, or with `code`.
  Script& ActsAsNetsh(std::uint64_t after, std::optional<std::uint32_t> code = std::nullopt);
  // TerminateProcess and the closing of its job take so long to have effect.
  Script& TakesToDie(std::uint64_t milliseconds) { return Set(terminationTime, milliseconds); }
  // Anything else, under the machine's lock.
  Script& Does(std::uint64_t after, std::function<void(Process&)> action);
  Script& AtExit(std::function<void(Process&)> action) { return Set(atExit, std::move(action)); }

  struct Exit {
    std::uint32_t code;
    std::uint64_t after;
  };
  struct Listening {
    std::uint16_t port;
    std::uint64_t after;
  };
  struct Netsh {
    std::uint64_t after;
    std::optional<std::uint32_t> code;
  };
  struct Step {
    std::uint64_t after;
    std::function<void(Process&)> action;
  };

  std::uint32_t createError = 0;
  std::optional<Exit> exit;
  std::vector<Listening> listens;
  std::optional<AdapterPlan> adapter;
  std::optional<Netsh> netsh;
  std::uint64_t terminationTime = 0;
  std::vector<Step> steps;
  std::function<void(Process&)> atExit;

 private:
  template <class Field, class Value>
  Script& Set(Field& field, Value value) {
    field = std::move(value);
    return *this;
  }
};

// A child that starts and does nothing for ever.
inline Script Idle() {
  return Script();
}
Script TypicalXray();       // listens on 17593 after 500 ms
Script TypicalTun2socks();  // brings TavrinAdapter()
Script TypicalNetsh();      // 60 ms

// Which script a started image follows: by a wildcard pattern over its file name or its full path.
class Programs {
 public:
  explicit Programs(Core& core) : core_(core) {}

  // For every start from now on; replaces an earlier one for the same pattern.
  void On(const std::wstring& pattern, Script script);
  // For one start, before the standing one; several queue up.
  void OnNext(const std::wstring& pattern, Script script);

  // The script of this start. An image that nobody scripted does nothing for ever.
  Script Take(const std::wstring& imagePath);

 private:
  struct Rule {
    std::wstring pattern;
    std::vector<Script> once;
    std::optional<Script> standing;
  };
  Rule& RuleFor(const std::wstring& pattern);

  Core& core_;
  std::vector<Rule> rules_;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_SCRIPT_H_
