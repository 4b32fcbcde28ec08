// Which text a connect answers when one of its calls fails.
#ifndef TAVRIN_TESTS_FAULT_REPLY_TEXTS_H_
#define TAVRIN_TESTS_FAULT_REPLY_TEXTS_H_

#include <cstddef>
#include <string>
#include <vector>

#include "tests/fault/each_call.h"
#include "tests/fault/survey.h"

namespace fault {

// The text of the connect when it is hit at `points[index]`; empty for success.
std::wstring ExpectedText(const Scene& scene, const std::vector<Point>& points, size_t index,
                          Mode mode);

// Whether a failure of any call is answered so.
bool IsKnownText(const Scene& scene, const std::wstring& text);

// Entries of the table of texts that no call of this scene is meant by. A call that the product no
// longer makes can't fail, so its text would be missed in silence.
std::vector<std::string> UnreachedTexts(const Scene& scene, const std::vector<Point>& points);

// What a connect says while something else, such as an orphan of Xray, holds its port.
extern const wchar_t kPortTakenText[];

}  // namespace fault

#endif  // TAVRIN_TESTS_FAULT_REPLY_TEXTS_H_
