#include "standalone/tables/TableMessages.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/MessageExcerpt.h"

namespace orv {
namespace {

std::string Where(const std::string& source, std::uint64_t line) {
  return fmt::format("{}, line {}", source, line);
}

std::string Where(const TextPlace& place) {
  const std::string column = fmt::format("{}, {} {}, column {}", place.Source, place.Unit, place.Line, place.Column);
  return place.Name.empty() ? column : fmt::format("{} (\"{}\")", column, Excerpt(place.Name));
}

std::string_view DelimiterName(char delimiter) {
  return delimiter == '\t' ? "tab" : delimiter == ';' ? "semicolon" : "comma";
}

std::string Reason(int reason) {
  return std::generic_category().message(reason);
}

// `1 field, but line 1 names 3 (time, status, age).`
std::string FieldsAgainstNames(std::uint64_t fields, const HeaderLine& header) {
  return fmt::format("{}, but line {} names {} ({}).", CountOf(fields, "field"), header.Line, header.Names.size(),
                     NameList(header.Names));
}

}  // namespace

// ---- The file as a whole --------------------------------------------------------------------------------------------

std::string MissingFileMessage(const std::string& path) {
  return fmt::format("{}: no such file. Check the name and the folder.", path);
}

std::string FolderMessage(const std::string& path) {
  return fmt::format("{}: a folder, not a file. Name the file in it that is to be read.", path);
}

std::string CannotOpenMessage(const std::string& path, int reason) {
  if (reason == ENOENT) return MissingFileMessage(path);
  if (reason == EACCES)
    return fmt::format("{}: no permission to read this file. Change its permissions, or read a copy of your own.",
                       path);
  return fmt::format("{}: cannot be opened: {}.", path, Reason(reason));
}

std::string ReadFailedMessage(const std::string& source, int reason) {
  return fmt::format("{}: reading failed: {}. Check the disk or the connection, or read a copy.", source,
                     Reason(reason));
}

std::string UnknownEndingMessage(const std::string& path,
                                 const std::string& ending,
                                 const std::vector<std::string_view>& readable) {
  const std::string what =
      ending.empty() ? "a file without an ending cannot be read" : fmt::format("{} files cannot be read", ending);
  return fmt::format(
      "{}: {}. Readable are {}, and - for CSV from standard input.\n"
      "  Save the table in one of these forms.",
      path, what, fmt::join(readable, ", "));
}

std::string NotOrdinaryFileMessage(const std::string& path) {
  return fmt::format("{}: a pipe or a device. Tables of this form are read from ordinary files alone.", path);
}

std::string IntoPipeMessage(const std::string& path) {
  return fmt::format("{}: cannot be written: a pipe or a device. Name an ordinary file, or write .csv.", path);
}

std::string WrongFormMessage(const std::string& path, std::string_view expected, FileForm found) {
  const std::string_view advice = FormAdvice(found);
  return fmt::format("{}: not {}: its content is {}.\n  {}", path, expected, FormName(found),
                     advice.empty() ? "Check the file, or save the table again as CSV." : advice);
}

std::string DamagedFileMessage(const std::string& path, std::string_view name, std::string_view reason) {
  return fmt::format(
      "{}: cannot be read as {}: {}.\n"
      "  It may be incomplete or damaged: get it again, or save the table as CSV where it was made.",
      path, name, reason);
}

std::string WorkbookMessage(const std::string& path) {
  return fmt::format("{}: workbooks cannot be read. Save the sheet as CSV (.csv) and read that.", path);
}

std::string OutOfMemoryMessage(const std::string& source) {
  return fmt::format("{}: the table does not fit in memory. Leave out columns that the analysis does not need.",
                     source);
}

std::string EmptyFileMessage(const std::string& source) {
  return fmt::format("{}: nothing in it. Expected a line that names the variables, then one line a case.", source);
}

std::string FileChangedMessage(const std::string& source) {
  return fmt::format("{}: changed while it was read. Wait until it is complete and try again.", source);
}

std::string TooManyVariablesMessage(const std::string& source) {
  return fmt::format("{}: more than {} variables. Leave out columns that the analysis does not need.", source,
                     kMaximumVariables);
}

std::string TooManyCasesMessage(const std::string& source, int maximum) {
  return fmt::format("{}: more than {} cases. Split the file.", source, maximum);
}

// ---- The bytes ------------------------------------------------------------------------------------------------------

std::string Utf16Message(const std::string& source) {
  return fmt::format("{}: the text is in UTF-16. Save the file as CSV in UTF-8.", source);
}

std::string ZeroByteMessage(const std::string& source, std::uint64_t line) {
  return fmt::format("{}: a zero byte, so this is a binary file or text in UTF-16. Save the table as CSV in UTF-8.",
                     Where(source, line));
}

std::string NotUtf8Message(const std::string& source, std::uint64_t line) {
  return fmt::format("{}: bytes that are not UTF-8. Save the file in UTF-8.", Where(source, line));
}

// ---- The line that names the variables ------------------------------------------------------------------------------

std::string NoCasesMessage(const std::string& source, const HeaderLine& header) {
  return fmt::format("{}: no cases follow line {}, which names {} ({}). Expected one line a case.", source, header.Line,
                     CountOf(header.Names.size(), "variable"), NameList(header.Names));
}

std::string NumbersAsNamesMessage(const std::string& source, const HeaderLine& header) {
  return fmt::format(
      "{}: only numbers ({}), but the first line must name the variables.\n"
      "  Put a line above it with {}.",
      Where(source, header.Line), NameList(header.Names), CountOf(header.Names.size(), "name"));
}

std::string EmptyNameMessage(const std::string& source, std::uint64_t line, std::uint64_t column) {
  return fmt::format("{}: column {} has no name. Name it, or leave the column out.", Where(source, line), column);
}

std::string DuplicateNameMessage(const std::string& source,
                                 std::uint64_t line,
                                 const std::string& name,
                                 std::uint64_t firstColumn,
                                 std::uint64_t secondColumn) {
  return fmt::format("{}: columns {} and {} have the same name, \"{}\". Rename one of them.", Where(source, line),
                     firstColumn, secondColumn, Excerpt(name));
}

// ---- Variables and cases of files without lines
// ----------------------------------------------------------------------

std::string NoVariablesMessage(const std::string& source) {
  return fmt::format("{}: no variables in it. Check that this is the file with the cases.", source);
}

std::string NoRowsMessage(const std::string& source) {
  return fmt::format("{}: variables, but no case. Check that this is the whole table.", source);
}

std::string NamelessVariableMessage(const std::string& source, std::size_t variable) {
  return fmt::format("{}: variable {} has no name. Name it.", source, variable);
}

std::string UnreadableNameMessage(const std::string& source, std::size_t variable) {
  return fmt::format("{}: the name of variable {} is no UTF-8 text. Rename it.", source, variable);
}

std::string RepeatedNameMessage(const std::string& source,
                                const std::string& name,
                                std::size_t first,
                                std::size_t second) {
  return fmt::format("{}: variables {} and {} have the same name, \"{}\". Rename one of them.", source, first, second,
                     Excerpt(name));
}

std::string UnreadableTextMessage(const std::string& source, std::uint64_t caseNumber, const std::string& variable) {
  return fmt::format(
      "{}, case {}, variable \"{}\": a text that is not in the file's encoding. Correct it, or save the table as CSV "
      "in "
      "UTF-8.",
      source, caseNumber, Excerpt(variable));
}

std::string InfiniteValueMessage(const std::string& source, std::uint64_t caseNumber, const std::string& variable) {
  return fmt::format("{}, case {}, variable \"{}\": an infinite value. Replace it by a number, or make it missing.",
                     source, caseNumber, Excerpt(variable));
}

// ---- Records and fields ---------------------------------------------------------------------------------------------

std::string TooManyFieldsMessage(const std::string& source,
                                 std::uint64_t line,
                                 std::uint64_t fields,
                                 const HeaderLine& header,
                                 const std::string& last,
                                 const std::string& extra,
                                 char delimiter) {
  std::string message = fmt::format("{}: {}\n  The first extra field is \"{}\".", Where(source, line),
                                    FieldsAgainstNames(fields, header), Excerpt(extra));
  message += fmt::format(" If a value holds a {}, quote it", DelimiterName(delimiter));
  const bool example = delimiter != '\t' && !last.empty() && !extra.empty();
  return message + (example ? fmt::format(": \"{}{} {}\".", Excerpt(last), delimiter, Excerpt(extra)) : ".");
}

std::string TooFewFieldsMessage(const std::string& source,
                                std::uint64_t line,
                                std::uint64_t fields,
                                const HeaderLine& header,
                                char delimiter) {
  return fmt::format(
      "{}: {}\n  The first field that is absent is \"{}\". Leave the place of a missing value empty, but "
      "keep its {}.",
      Where(source, line), FieldsAgainstNames(fields, header), Excerpt(header.Names[fields]), DelimiterName(delimiter));
}

std::string UnclosedQuoteMessage(const TextPlace& place) {
  return fmt::format(
      "{}: the quote that opens here is not closed.\n"
      "  End the value with a quote. A quote inside a value is written twice: \"5\"\" pipe\".",
      Where(place));
}

std::string TextAfterQuoteMessage(const TextPlace& place, std::uint64_t openLine, char delimiter) {
  const std::string begin = openLine < place.Line ? fmt::format(" The value begins on line {}.", openLine) : "";
  return fmt::format(
      "{}: text between a closing quote and the next {}.{}\n"
      "  A quote inside a value is written twice: \"5\"\" pipe\".",
      Where(place), DelimiterName(delimiter), begin);
}

std::string QuoteInsideValueMessage(const TextPlace& place) {
  return fmt::format(
      "{}: a quote inside a value that does not begin with one.\n"
      "  Put the value in quotes and write the quote inside twice: \"5\"\" pipe\".",
      Where(place));
}

std::string TooLongValueMessage(const TextPlace& place) {
  return fmt::format("{}: a value of more than a million characters. Check that this is a table, one line a case.",
                     Where(place));
}

// ---- Values ---------------------------------------------------------------------------------------------------------

std::string CommaNumberMessage(const TextPlace& place, const std::string& text) {
  return fmt::format(
      "{}: the number {} has a comma. Write numbers with a point as the decimal sign and without marks "
      "between thousands.",
      Where(place), Excerpt(text));
}

std::string OutOfRangeMessage(const TextPlace& place, const std::string& text) {
  return fmt::format(
      "{}: the number {} is out of range. Numbers reach from about 1e-308 to 1e308.\n"
      "  Correct it, or leave the place empty if the value is missing.",
      Where(place), Excerpt(text));
}

std::string NotFiniteMessage(const TextPlace& place, const std::string& text) {
  return fmt::format(
      "{}: {} in a column of numbers. Write a finite number, or leave the place empty if the value is "
      "missing.",
      Where(place), Excerpt(text));
}

std::string NoSuchDayMessage(const TextPlace& place, const std::string& text) {
  return fmt::format(
      "{}: {} is not a day of the calendar. Correct it, or leave the place empty if the value is "
      "missing.",
      Where(place), Excerpt(text));
}

}  // namespace orv
