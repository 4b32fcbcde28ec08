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
  // `medians`: what each step took in earlier connects, -1 where nobody knows. `detail` gives what
  // stands behind a finished step, possibly nothing.
  LiveView(Output& output, std::vector<std::int64_t> medians,
           std::function<std::wstring(size_t)> detail);

  // `connect` is what the trace holds by now, null while it holds nothing. `now` counts the
  // milliseconds since the request.
  void update(const ConnectTrace* connect, std::uint64_t now);

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
  size_t shown_ = 0;                // steps that stand on the screen
  size_t marks_ = 0;                // that the trace had at the last look
  std::uint64_t lastMarkSeen_ = 0;  // when that number changed
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_LIVE_LIVE_VIEW_H_
