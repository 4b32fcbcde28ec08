#include "tests/bench/rounds.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace bench {
namespace {

// Of this thread: time that others took from it does not count.
double Nanoseconds() {
  timespec now = {};
  (void)clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// Short work is warm by then; the caches and the heap are as the case before has left them.
double TimeOf(const Case& measured, std::size_t repeats) {
  if (repeats > 1) {
    measured.work();
  }
  const double start = Nanoseconds();
  for (std::size_t i = 0; i < repeats; ++i) {
    measured.work();
  }
  return Nanoseconds() - start;
}

// How often the work has to run for a sample of `wanted` nanoseconds.
std::size_t RepeatsFor(const Case& measured, double wanted) {
  std::size_t repeats = 1;
  while (TimeOf(measured, repeats) < wanted) {
    repeats *= 2;
  }
  return repeats;
}

[[noreturn]] void ShowUsage(const char* program) {
  std::fprintf(stderr, "usage: %s --out FILE [--quick] [--rounds N] [--figure NAME]\n", program);
  std::exit(2);
}

}  // namespace

Options ReadOptions(int argc, char** argv) {
  Options options;
  bool roundsGiven = false;
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    const char* const value = i + 1 < argc ? argv[i + 1] : nullptr;
    if (option == "--quick") {
      options.quick = true;
      continue;
    }
    if (value == nullptr) {
      ShowUsage(argv[0]);
    } else if (option == "--out") {
      options.out = value;
    } else if (option == "--figure") {
      options.figure = value;
    } else if (option == "--rounds") {
      options.rounds = std::atoi(value);
      roundsGiven = true;
    } else {
      ShowUsage(argv[0]);
    }
    ++i;
  }
  if (options.out.empty() || options.rounds < 1) {
    ShowUsage(argv[0]);
  }
  options.rounds = options.quick && !roundsGiven ? 3 : options.rounds;
  return options;
}

std::vector<std::size_t> Sizes(std::size_t most, bool quick) {
  std::vector<std::size_t> sizes;
  for (std::size_t size = most; size > 0; size /= 10) {
    sizes.insert(sizes.begin(), size);
  }
  sizes.resize(quick ? 2 : sizes.size());
  return sizes;
}

Report::Report(std::string path) : path_(std::move(path)) {}

void Report::add(const std::string& figure, const std::string& subject, std::size_t size,
                 const std::string& unit, const std::vector<double>& samples) {
  lines_ += R"({"figure":")" + figure + R"(","subject":")" + subject + R"(","size":)" +
            std::to_string(size) + R"(,"unit":")" + unit + R"(","samples":[)";
  for (std::size_t i = 0; i < samples.size(); ++i) {
    char number[32];
    (void)std::snprintf(number, sizeof number, "%s%.10g", i == 0 ? "" : ",", samples[i]);
    lines_ += number;
  }
  lines_ += "]}\n";
}

Report::~Report() {
  std::FILE* const file = std::fopen(path_.c_str(), "wb");
  const bool written =
      file != nullptr && std::fwrite(lines_.data(), 1, lines_.size(), file) == lines_.size();
  if (file == nullptr || std::fclose(file) != 0 || !written) {
    Fail("cannot write " + path_);
  }
}

void Measure(const std::string& figure, const Cases& cases, const Options& options,
             Report& report) {
  const double wanted = options.quick ? 3e5 : 3e6;
  std::vector<std::size_t> repeats;
  for (const Case& measured : cases) {
    repeats.push_back(RepeatsFor(measured, wanted));
  }
  std::vector<std::vector<double>> samples(cases.size());
  for (int round = 0; round < options.rounds; ++round) {
    for (std::size_t i = 0; i < cases.size(); ++i) {
      samples[i].push_back(TimeOf(cases[i], repeats[i]) / static_cast<double>(repeats[i]));
    }
  }
  for (std::size_t i = 0; i < cases.size(); ++i) {
    report.add(figure, cases[i].subject, cases[i].size, "ns", samples[i]);
  }
}

void Fail(const std::string& text) {
  std::fprintf(stderr, "%s\n", text.c_str());
  std::exit(1);
}

}  // namespace bench
