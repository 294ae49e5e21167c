// Texts with numbers in them, the same under every locale.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace orv {

// `format` with each "%d" or "%s" replaced by the next argument; other text stays. Missing arguments leave it out.
std::string FormatText(std::string_view format, std::initializer_list<std::string> arguments);

// The number as printf's "%d" writes it.
std::string FormatInteger(long long value);

// The number as printf's "%g" writes it in the C locale: 6 significant digits.
std::string FormatGeneral(double value);

}  // namespace orv
