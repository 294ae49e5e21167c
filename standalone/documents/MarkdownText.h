// MarkdownText: texts as they must stand in GitHub Flavored Markdown to be read as themselves.
#pragma once

#include <string>
#include <string_view>

namespace orv {

// A text within a line or a table's cell, printable, on one line, with a backslash before every sign that Markdown
// would take as its own there. An underscore within a word and a "<" that begins no tag stand for themselves.
std::string MarkdownText(std::string_view text);

// The same for a text that begins a line, where "#", "-", "+", "=" and "1." would begin a heading, a list or a rule.
std::string MarkdownLine(std::string_view text);

// A text on its own lines with every character kept, between two fences that it does not hold.
std::string MarkdownFence(std::string_view text);

}  // namespace orv
