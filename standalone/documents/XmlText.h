// XmlText: texts as they must stand in the XML of a workbook to be read as themselves.
#pragma once

#include <string>
#include <string_view>

namespace orv {

// For the content of elements and for attributes in double quotes. Characters that XML cannot hold, and bytes that are
// no UTF-8, become U+FFFD.
std::string XmlText(std::string_view text);

// The same for a cell of a workbook, where "_x0041_" would be read as "A", and which holds at most 32767 characters of
// UTF-16: a longer text is cut and ends in "...".
std::string XmlCellText(std::string_view text);

// Characters of UTF-16 that a text of UTF-8 needs.
std::size_t Utf16Length(std::string_view text);

// The longest beginning of the text that needs no more than `length` characters of UTF-16.
std::string_view FirstOfUtf16Length(std::string_view text, std::size_t length);

}  // namespace orv
