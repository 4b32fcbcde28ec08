#include "tests/sequence/shrink.h"

#include <algorithm>

namespace sequence {

Events Shrink(Events events, const std::function<bool(const Events&)>& fails) {
  const auto at = [&events](size_t index) {
    return events.begin() + static_cast<std::ptrdiff_t>(index);
  };
  for (size_t size = std::max<size_t>(events.size() / 2, 1);; size = (size + 1) / 2) {
    bool shorter = false;
    for (size_t from = 0; from < events.size();) {
      const size_t end = std::min(from + size, events.size());
      Events rest(events.begin(), at(from));
      rest.insert(rest.end(), at(end), events.end());
      if (fails(rest)) {
        events = std::move(rest);
        shorter = true;
      } else {
        from = end;
      }
    }
    if (size == 1 && !shorter) {
      return events;
    }
  }
}

}  // namespace sequence
