#include "tests/sequence/batch.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

#include "tests/sequence/run.h"
#include "tests/sequence/shrink.h"

namespace sequence {
namespace {

constexpr std::uint64_t kSeedsOfAProcess = 100;
constexpr unsigned kSecondsOfASequence =
    120;  // real ones; only a sequence that hangs takes so long

std::string ThisProgram() {
  std::array<char, PATH_MAX> path{};
  const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
  return {path.data(), length > 0 ? static_cast<size_t>(length) : 0};
}

std::string Command(const std::string& options) {
  return "'" + ThisProgram() + "' " + options;
}

// Runs a program and gives its output by lines; the result is its exit code, or -1.
int ReadLines(const std::string& command, const std::function<void(const std::string&)>& take) {
  std::FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) {
    return -1;
  }
  std::string line;
  for (int byte = std::fgetc(pipe); byte != EOF; byte = std::fgetc(pipe)) {
    if (byte != '\n') {
      line += static_cast<char>(byte);
      continue;
    }
    take(line);
    line.clear();
  }
  const int status = pclose(pipe);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string WordsOf(const Outcome& outcome, const Events& events) {
  std::string text =
      "event " + std::to_string(outcome.at) + ", " + TextOf(events[outcome.at - 1]) + ":\n";
  for (const std::string& difference : outcome.differences) {
    text += "  " + difference + "\n";
  }
  return text;
}

bool Fails(const Events& events) {
  return ReadLines(Command("--quiet --events '" + TextOf(events) + "'"),
                   [](const std::string&) {}) != 0;
}

// Everything a person needs of a seed that failed.
std::string Explain(std::uint64_t seed) {
  const Events events = MakeSequence(seed);
  const Events fewest = Shrink(events, Fails);
  const std::string command = Command("--events '" + TextOf(fewest) + "'");
  std::string text = "seed " + std::to_string(seed) + " fails; " + std::to_string(events.size()) +
                     " events, " + std::to_string(fewest.size()) +
                     " of them are enough. Replay:\n" + command + "\n";
  (void)ReadLines(command, [&text](const std::string& line) { text += line + "\n"; });
  return text;
}

class Batches {
 public:
  explicit Batches(Range range) : next_(range.from), end_(range.from + range.count) {}

  void Work() {
    for (;;) {
      Range range;
      {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (next_ == end_ || failed_) return;
        range = {next_, std::min(kSeedsOfAProcess, end_ - next_)};
        next_ += range.count;
      }
      RunOne(range);
    }
  }

  Report Result() {
    if (failed_) report_.failure = told_ + Explain(failedSeed_);
    return report_;
  }

 private:
  void RunOne(Range range) {
    std::uint64_t at = range.from;
    std::string told;  // what failed, or what a crash has left
    const std::string command = Command("--worker --seed " + std::to_string(range.from) +
                                        " --count " + std::to_string(range.count));
    const int code =
        ReadLines(command, [&](const std::string& line) { TakeLine(line, &at, &told); });
    const std::lock_guard<std::mutex> lock(mutex_);
    if (code == 0) {
      report_.done += range.count;
      return;
    }
    report_.done += at - range.from;
    if (failedSeed_ > at) {
      failedSeed_ = at;
      told_ = told + "exit code " + std::to_string(code) + "\n";
    }
    failed_ = true;
  }

  void TakeLine(const std::string& line, std::uint64_t* at, std::string* told) {
    std::istringstream words(line);
    std::string kind;
    std::string state;
    std::string event;
    std::uint64_t count = 0;
    std::getline(words, kind, '\t');
    if (kind == "seed") {
      words >> *at;
    } else if (kind == "met") {
      std::getline(words, state, '\t');
      std::getline(words, event, '\t');
      words >> count;
      const std::lock_guard<std::mutex> lock(mutex_);
      report_.table.Add(state, event, count);
    } else {
      *told += line + "\n";
    }
  }

  std::mutex mutex_;
  std::uint64_t next_;
  std::uint64_t end_;
  bool failed_ = false;
  std::uint64_t failedSeed_ = UINT64_MAX;
  std::string told_;
  Report report_;
};

}  // namespace

Report RunAll(Range range, size_t jobs) {
  Batches batches(range);
  std::vector<std::thread> threads;
  for (size_t i = 1; i < jobs; ++i) {
    threads.emplace_back([&batches] { batches.Work(); });
  }
  batches.Work();
  for (std::thread& thread : threads) {
    thread.join();
  }
  return batches.Result();
}

int RunAsWorker(Range range) {
  Table table;
  for (std::uint64_t seed = range.from; seed < range.from + range.count; ++seed) {
    std::printf("seed\t%llu\n", static_cast<unsigned long long>(seed));
    std::fflush(stdout);
    alarm(kSecondsOfASequence);
    const Events events = MakeSequence(seed);
    const Outcome outcome = RunSequence(events, table);
    if (outcome.failed()) {
      std::printf("%s", WordsOf(outcome, events).c_str());
      std::fflush(stdout);
      _exit(1);
    }
  }
  for (const auto& [pair, count] : table.Counts()) {
    std::printf("met\t%s\t%s\t%llu\n", pair.first.c_str(), pair.second.c_str(),
                static_cast<unsigned long long>(count));
  }
  return 0;
}

int Replay(const Events& events) {
  alarm(kSecondsOfASequence);
  Table table;
  const Outcome outcome = RunSequence(events, table);
  std::printf("%s", outcome.failed() ? WordsOf(outcome, events).c_str() : "the model holds\n");
  std::fflush(stdout);
  return outcome.failed() ? 1 : 0;
}

}  // namespace sequence
