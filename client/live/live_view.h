// A connect on the screen: each step stays as a line when it is done, and the one that is under way
// moves.
#ifndef TAVRIN_CLIENT_LIVE_LIVE_VIEW_H_
#define TAVRIN_CLIENT_LIVE_LIVE_VIEW_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "client/console/moving_line.h"
#include "client/console/output.h"
#include "client/trace/steps.h"

namespace vpn {

class LiveView {
 public:
  // `detail` gives what stands behind a finished step, possibly nothing.
  LiveView(Output& output, std::function<std::wstring(size_t)> detail);

  // What each step took in earlier connects, -1 where nobody knows.
  void expect(std::vector<std::int64_t> medians);

  // `connect` is what the trace holds by now, null while it holds nothing. Both times count the
  // milliseconds since the request; `grownAt` is that of the trace's last mark.
  void update(const ConnectTrace* connect, std::uint64_t now, std::uint64_t grownAt);

  // The last look, after the reply. `failed`: the step that the connect ended at is marked;
  // `inChecks` when that was none of the steps but the checks before the start.
  void finish(const ConnectTrace* connect, std::uint64_t now, bool failed, bool inChecks);

 private:
  void showFinished(const StepList& steps);
  void showMoving(const StepList& steps, std::uint64_t now);
  void stepLine(wchar_t mark, Ink ink, const std::wstring& name, std::uint64_t time,
                const std::wstring& detail);

  Output& output_;
  MovingLine moving_;
  std::vector<std::int64_t> medians_;
  std::function<std::wstring(size_t)> detail_;
  size_t shown_ = 0;            // steps that stand on the screen
  size_t marks_ = 0;            // that the trace had at the last look
  std::uint64_t lastMark_ = 0;  // when the last of them was written
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_LIVE_LIVE_VIEW_H_
