// How much room text takes on a screen of fixed columns.
#ifndef TAVRIN_CLIENT_TEXT_DISPLAY_WIDTH_H_
#define TAVRIN_CLIENT_TEXT_DISPLAY_WIDTH_H_

#include <string>
#include <string_view>
#include <vector>

namespace vpn {

// Columns that the text takes: two for East Asian wide characters and pictures, none for combining
// marks and other invisible ones, one for everything else. A surrogate pair counts as its
// character.
size_t DisplayWidth(std::wstring_view text);

// With blanks up to `width` columns. A longer text stays as it is.
std::wstring PadRight(std::wstring_view text, size_t width);
std::wstring PadLeft(std::wstring_view text, size_t width);

// At most `width` columns, the last of them an ellipsis when something was cut off.
std::wstring CutToWidth(std::wstring_view text, size_t width);

// Lines of at most `width` columns, broken at blanks; all but the first begin with `hang` blanks. A
// word that is too long for a line stands on one of its own.
std::vector<std::wstring> WrapText(const std::wstring& text, size_t width, size_t hang);

// One line that can do no harm on a screen: control characters become blanks.
std::wstring PlainLine(std::wstring text);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TEXT_DISPLAY_WIDTH_H_
