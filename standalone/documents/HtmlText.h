// HtmlText: texts as they must stand in HTML to be read as themselves.
#pragma once

#include <string>
#include <string_view>

namespace orv {

// A printable text with the signs of the markup as references. A text with characters beyond ASCII stands in <bdi>, so
// that a name of a script that runs from right to left leaves the direction of what stands beside it alone.
// For the content of elements, not for attributes.
std::string HtmlText(std::string_view text);

// A text such as program code for the content of <pre>: printable, with its line ends and tabs.
std::string HtmlProgramText(std::string_view text);

}  // namespace orv
