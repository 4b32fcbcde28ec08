#include "tests/sim/threads.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>

namespace sim {
namespace {

// Never destroyed: threads wait on it until the program has ended.
struct CarPark {
  std::mutex mutex;
  std::condition_variable never;
  std::set<int> threads;
};

CarPark& TheCarPark() {
  static CarPark& park = *new CarPark;
  return park;
}

}  // namespace

void ParkForEver() {
  CarPark& park = TheCarPark();
  std::unique_lock<std::mutex> lock(park.mutex);
  park.threads.insert(static_cast<int>(syscall(SYS_gettid)));
  for (;;) {
    park.never.wait(lock);
  }
}

std::set<int> AllThreads() {
  std::set<int> threads;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    threads.insert(std::atoi(entry.path().filename().c_str()));
  }
  return threads;
}

std::set<int> OtherThreads(const std::set<int>& known) {
  std::set<int> others = AllThreads();
  CarPark& park = TheCarPark();
  const std::lock_guard<std::mutex> lock(park.mutex);
  std::erase_if(others, [&](int thread) {
    return known.count(thread) != 0 || park.threads.count(thread) != 0;
  });
  return others;
}

}  // namespace sim
