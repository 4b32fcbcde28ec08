// The standard input: a person at a console, or a file or pipe with prepared answers.
#ifndef TAVRIN_CLIENT_CONSOLE_INPUT_H_
#define TAVRIN_CLIENT_CONSOLE_INPUT_H_

#include <string>

#include "client/console/interrupt.h"
#include "client/console/output.h"

namespace vpn {

// A person can be asked.
bool HasKeyboard();

enum class Echo { kShown, kHidden };

struct Answer {
  enum class Kind { kLine, kEnd, kInterrupted };
  Kind kind = Kind::kEnd;
  std::wstring text;  // without its line ending
};

// Asks at the console, on `output`. A hidden answer is not echoed; the console's mode is as before
// afterwards, also at Ctrl+C.
Answer AskPerson(const std::wstring& question, Echo echo, const InterruptWatch& interrupt,
                 Output& output);

// The next line of a file or pipe, in UTF-8 with or without a byte-order mark. Nothing behind its
// line feed is taken.
Answer ReadInputLine();

}  // namespace vpn

#endif  // TAVRIN_CLIENT_CONSOLE_INPUT_H_
