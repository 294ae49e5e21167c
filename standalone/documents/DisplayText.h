// DisplayText: texts as they may stand on a terminal, and the room that they take there.
//
// Names come from data files and may hold any bytes. A stray control sequence must neither move the cursor nor change
// colours, so only printable characters pass.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

// The text with tabs and line ends as blanks, and with other control characters, marks that change the writing
// direction and bytes that are no UTF-8 as U+FFFD.
std::string PrintableText(std::string_view text);

// Terminal columns of a printable text: 2 for the wide characters of East Asian scripts and pictographs, 0 for marks
// that combine with the character before them, 1 for all others.
int DisplayWidth(std::string_view text);

// The lines of a text, printable, without blanks at their ends.
std::vector<std::string> PrintableLines(std::string_view text);

// A text such as program code: printable, but with its line ends and tabs. It ends in a line feed unless it is empty.
std::string PrintableProgramText(std::string_view text);

}  // namespace orv
