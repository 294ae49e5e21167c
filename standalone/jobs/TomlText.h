// Values as TOML writes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

// A text between quotes, with what cannot stand there escaped. Bytes beyond ASCII stay as they are.
std::string TomlString(std::string_view text);

// A name before an equals sign: in quotes where it needs them.
std::string TomlName(std::string_view name);

// A number that reads back to the same double. REQUIRES: it is finite.
std::string TomlNumber(double number);

// The number that a text is, when its text comes back from TOML; otherwise the text in quotes. A code of the command
// line is a number or a label, and so is a value of TOML.
std::string TomlCode(const std::string& text);

// "[a, b]", in lines of their own when they would be too long for one.
std::string TomlList(const std::vector<std::string>& items);

}  // namespace orv
