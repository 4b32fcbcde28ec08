// The fewest events of a failing sequence that still fail.
#ifndef TAVRIN_TESTS_SEQUENCE_SHRINK_H_
#define TAVRIN_TESTS_SEQUENCE_SHRINK_H_

#include <functional>

#include "tests/sequence/events.h"

namespace sequence {

// `fails` tells for a part of the sequence, in its order, whether it still fails. No single event
// of the result can be left out.
Events Shrink(Events events, const std::function<bool(const Events&)>& fails);

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_SHRINK_H_
