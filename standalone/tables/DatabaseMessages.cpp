#include "standalone/tables/DatabaseMessages.h"

#include <fmt/format.h>

#include "standalone/tables/MessageExcerpt.h"

namespace orv {

// ---- .orv files -----------------------------------------------------------------------------------------------------

std::string ForeignDatabaseMessage(const std::string& path) {
  return fmt::format(
      "{}: an SQLite database, but no table of Orvanta Cox.\n"
      "  Read one of its tables with \"sqlite:{}?table=NAME\".",
      path, path);
}

std::string NewerOrvMessage(const std::string& path, std::int64_t version, std::int64_t newest) {
  return fmt::format(
      "{}: version {} of the .orv form, but this program reads up to version {}. Install a newer one, or have the "
      "table saved as CSV.",
      path, version, newest);
}

std::string DamagedOrvMessage(const std::string& path, std::string_view fault) {
  return fmt::format("{}: damaged: {}. Write it again with orvcox convert, or read a copy.", path, fault);
}

std::string UnsortedTextsMessage(const std::string& path, const std::string& variable) {
  return fmt::format(
      "{}: the value labels of the text variable \"{}\" are not numbered 1, 2, ... in the sorted order of their texts. "
      "Renumber them, or set its type to number.",
      path, Excerpt(variable));
}

std::string UnknownTextCodeMessage(const std::string& path, const std::string& variable) {
  return fmt::format(
      "{}: the text variable \"{}\" holds a code without a text. Add it to value_labels, or set the type to number.",
      path, Excerpt(variable));
}

std::string NoNumberMessage(const std::string& path, std::uint64_t caseNumber, const std::string& variable) {
  return fmt::format("{}, case {}, variable \"{}\": no finite number. Write a number, or NULL if the value is missing.",
                     path, caseNumber, Excerpt(variable));
}

// ---- Other databases ------------------------------------------------------------------------------------------------

std::string SqliteAddressMessage(const std::string& address, std::string_view fault) {
  return fmt::format(
      "{}: {}.\n"
      "  Write sqlite:FILE?table=NAME or sqlite:FILE?query=SELECT..., with %3F for a question mark in FILE and %25 for "
      "a "
      "percent sign.",
      Excerpt(address), fault);
}

std::string NoTablesMessage(const std::string& path) {
  return fmt::format("{}: a database without tables. Check that this is the file with the cases.", path);
}

std::string SeveralTablesMessage(const std::string& path, const std::vector<std::string>& tables) {
  return fmt::format(
      "{}: {} tables ({}). Choose one with \"sqlite:{}?table=NAME\", or join them with \"sqlite:{}?query=SELECT...\".",
      path, tables.size(), NameList(tables), path, path);
}

std::string NoSuchTableMessage(const std::string& path,
                               const std::string& table,
                               const std::vector<std::string>& tables) {
  return fmt::format("{}: no table \"{}\" in it. It has {}.", path, Excerpt(table), NameList(tables));
}

std::string QueryMessage(const std::string& path, std::string_view fault) {
  return fmt::format("{}: the query cannot be run: {}. Correct it.", path, fault);
}

std::string NotASelectMessage(const std::string& path) {
  return fmt::format("{}: the query may only read this database: write one SELECT.", path);
}

std::string BinaryValueMessage(const std::string& source, std::uint64_t row, const std::string& variable) {
  return fmt::format("{}, row {}, variable \"{}\": binary data. Leave this column out by a query.", source, row,
                     Excerpt(variable));
}

}  // namespace orv
