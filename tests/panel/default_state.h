#ifndef TAVRIN_TESTS_PANEL_DEFAULT_STATE_H_
#define TAVRIN_TESTS_PANEL_DEFAULT_STATE_H_

#include "tests/panel/replies.h"

namespace panel {

// A panel of the first family with one customer who is signed in on one machine, three plans, three
// nodes and two payment methods. Tests replace the parts that they are about.
Json DefaultState();

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_DEFAULT_STATE_H_
