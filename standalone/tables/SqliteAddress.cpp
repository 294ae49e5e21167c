#include "standalone/tables/SqliteAddress.h"

#include <charconv>
#include <system_error>

#include "standalone/tables/DatabaseMessages.h"
#include "standalone/tables/TableError.h"

namespace orv {
namespace {

constexpr std::string_view kScheme = "sqlite:";
constexpr int kHexadecimal = 16;

std::string Decoded(const std::string& address, std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    const std::string_view digits = text.substr(i + 1, 2);
    unsigned byte = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), byte, kHexadecimal);
    if (digits.size() < 2 || result.ec != std::errc() || result.ptr != digits.data() + 2 || byte == 0)
      throw TableError(SqliteAddressMessage(address, "a percent sign stands before two hexadecimal digits, not 00"));
    decoded += static_cast<char>(byte);
    i += 2;
  }
  return decoded;
}

}  // namespace

bool IsSqliteAddress(std::string_view name) {
  return name.starts_with(kScheme);
}

SqliteAddress ParseSqliteAddress(const std::string& address) {
  const auto refuse = [&address](std::string_view fault) { throw TableError(SqliteAddressMessage(address, fault)); };
  const std::string_view rest = std::string_view(address).substr(kScheme.size());
  const std::size_t mark = rest.find('?');
  SqliteAddress parsed;
  parsed.File = Decoded(address, rest.substr(0, mark));
  if (parsed.File.empty()) refuse("no file is named");
  if (mark == std::string_view::npos) return parsed;

  const std::string_view choice = rest.substr(mark + 1);
  const std::size_t equals = choice.find('=');
  const std::string_view key = choice.substr(0, equals);
  if (equals == std::string_view::npos || (key != "table" && key != "query"))
    refuse("behind the question mark stands neither table= nor query=");
  const std::string value = Decoded(address, choice.substr(equals + 1));
  if (value.empty()) refuse("nothing stands behind the equals sign");
  (key == "table" ? parsed.Table : parsed.Query) = value;
  return parsed;
}

}  // namespace orv
