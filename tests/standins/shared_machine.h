// The machine state of one test, in one directory that all its processes share: "machine.json" and
// "calls.log" beside it. An object of this class is one turn at it: it holds the machine's mutex,
// and writes back what was changed when it goes.
#ifndef TAVRIN_TESTS_STANDINS_SHARED_MACHINE_H_
#define TAVRIN_TESTS_STANDINS_SHARED_MACHINE_H_

#include <string>
#include <string_view>
#include <vector>

#include "tests/standins/machine_state.h"

namespace standins {

// Names the directory; child processes inherit it.
inline constexpr wchar_t kMachineVariable[] = L"TAVRIN_TEST_MACHINE";
// Does the same, beside the library, for a process whose environment the test can't choose.
inline constexpr wchar_t kMachineFile[] = L"test-machine.txt";

std::wstring MachineDirectoryFromEnvironment();

class SharedMachine {
 public:
  // Throws std::runtime_error without a directory, nlohmann::json::exception for a damaged state.
  // A missing state file means the typical machine. Adapters whose process is gone are dropped
  // here, which is when anybody could notice.
  explicit SharedMachine(std::wstring directory = MachineDirectoryFromEnvironment());
  ~SharedMachine();
  SharedMachine(const SharedMachine&) = delete;
  SharedMachine& operator=(const SharedMachine&) = delete;

  MachineState& state() { return state_; }
  // Writes the changes back now, within the turn.
  void Save();
  // Takes away every adapter whose process is gone, also those that outlive it.
  void RemovePhantoms() { DropAdapters(true); }
  // Appends one line to the log, whatever becomes of the turn.
  void Log(std::string_view line);
  // Appends "TICKS WHAT" to the file of moments, when the machine keeps them. What is logged is
  // noted there too.
  void Note(std::string_view what, std::uint64_t moment) const;

 private:
  void Load();
  void DropAdapters(bool alsoOutliving);

  std::wstring directory_;
  void* mutex_ = nullptr;
  std::string loadedText_;
  MachineState state_;
};

// The log's lines up to now.
std::vector<std::string> ReadCallLog(const std::wstring& directory);

// Now and the start of this process, on one clock that all processes share: 100 nanoseconds since
// 1601.
std::uint64_t MomentNow();
std::uint64_t MomentOfOwnStart();
inline constexpr wchar_t kMomentsFile[] = L"moments.log";

// Binds the adapter to the calling process.
void OwnAdapter(MachineState& state, std::uint64_t luid, bool outlives);

// Logs this process's start: its image, id, working directory and raw command line. Gives the state
// of that very moment, so that whoever has seen the line may change it for others.
MachineState LogOwnStart();

}  // namespace standins

#endif  // TAVRIN_TESTS_STANDINS_SHARED_MACHINE_H_
