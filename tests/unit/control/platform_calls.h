// What a connect, a disconnect and an idle minute ask of the platform, and the least that their
// ordered steps allow.
#ifndef TAVRIN_TESTS_UNIT_CONTROL_PLATFORM_CALLS_H_
#define TAVRIN_TESTS_UNIT_CONTROL_PLATFORM_CALLS_H_

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace unit {

// How often each function is called in each step. The step "log" holds the calls of every line of
// the service log.
using CallCounts = std::map<std::string, std::map<std::string, int>>;

struct CountedRun {
  CallCounts connect;
  CallCounts disconnect;
  CallCounts idleMinute;  // with the tunnel up
};

// The pipe server with one client: a connect whose account was not asked for lately, a minute, and
// a disconnect, each from the client's request to the wait for the next client. No helper needs
// time, so each wait is one look. Installs a machine. Empty counts when a reply is not as it should
// be.
CountedRun CountPlatformCalls();

// The least, step by step. Each line of the tables says why.
CallCounts LeastOfConnect();
CallCounts LeastOfDisconnect();

// Without the log's.
int Total(const CallCounts& counts);

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_CONTROL_PLATFORM_CALLS_H_
