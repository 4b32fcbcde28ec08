// One connect as a waterfall of text: a bar for each step, to scale.
#ifndef TAVRIN_CLIENT_TRACE_WATERFALL_H_
#define TAVRIN_CLIENT_TRACE_WATERFALL_H_

#include <cstdint>
#include <string>
#include <vector>

#include "client/trace/medians.h"

namespace vpn {

struct WaterfallRow {
  std::wstring text;
  bool isLongest = false;
  bool isEnd = false;  // the row that tells where a connect ended that is not complete
};

// `medians` as `MedianTimes` gives them; `columns` is the room for a whole row.
std::vector<WaterfallRow> DrawWaterfall(const ConnectTrace& connect,
                                        const std::vector<std::int64_t>& medians, size_t columns);

// A bar that begins at `start` and takes `time` of `total`, `width` columns in all. A step that
// took any time at all has at least the thinnest mark.
std::wstring DrawBar(std::uint64_t start, std::uint64_t time, std::uint64_t total, size_t width);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TRACE_WATERFALL_H_
