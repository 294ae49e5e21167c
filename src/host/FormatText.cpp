#include "host/FormatText.h"

#include <array>
#include <charconv>

namespace orv {

std::string FormatText(std::string_view format, std::initializer_list<std::string> arguments) {
  std::string out;
  const std::string* next = arguments.begin();
  for (std::size_t at = 0; at < format.size(); ++at) {
    const bool isPlace =
        format[at] == '%' && at + 1 < format.size() && (format[at + 1] == 'd' || format[at + 1] == 's');
    if (!isPlace) {
      out += format[at];
      continue;
    }
    if (next != arguments.end()) out += *next++;
    ++at;
  }
  return out;
}

std::string FormatInteger(long long value) {
  return std::to_string(value);
}

std::string FormatGeneral(double value) {
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 6).ptr;
  return {text.data(), end};
}

}  // namespace orv
