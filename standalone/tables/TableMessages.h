// The messages about tables that cannot be read. Each names the file, the place and the way out.
//
// `source` is the file's name as the user gave it, or "standard input". The texts carry no newline at their end.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/tables/FileForm.h"

namespace orv {

// What messages call the source of "-".
inline constexpr std::string_view kStandardInputName = "standard input";

// A field of a text file, or a value in a row of a database.
struct TextPlace {
  std::string Source;
  std::uint64_t Line = 0;    // from 1
  std::uint64_t Column = 0;  // number of the field, from 1
  std::string Name;          // of the variable; empty when not known
  std::string_view Unit = "line";
};

// The line that names the variables.
struct HeaderLine {
  std::uint64_t Line = 0;
  std::vector<std::string> Names;
};

// ---- The file as a whole --------------------------------------------------------------------------------------------
std::string MissingFileMessage(const std::string& path);
std::string FolderMessage(const std::string& path);
// `reason` is an error number of the operating system.
std::string CannotOpenMessage(const std::string& path, int reason);
std::string ReadFailedMessage(const std::string& source, int reason);
// `ending` has its point, or is empty.
std::string UnknownEndingMessage(const std::string& path,
                                 const std::string& ending,
                                 const std::vector<std::string_view>& readable);
std::string NotOrdinaryFileMessage(const std::string& path);
std::string IntoPipeMessage(const std::string& path);
// A file whose name promises `expected`, such as "an SPSS file".
std::string WrongFormMessage(const std::string& path, std::string_view expected, FileForm found);
// A file of the form `name` that its reader gives up on, for `reason`.
std::string DamagedFileMessage(const std::string& path, std::string_view name, std::string_view reason);
std::string WorkbookMessage(const std::string& path);
std::string OutOfMemoryMessage(const std::string& source);
std::string EmptyFileMessage(const std::string& source);
std::string FileChangedMessage(const std::string& source);
std::string TooManyVariablesMessage(const std::string& source);
std::string TooManyCasesMessage(const std::string& source, int maximum);

// ---- The bytes ------------------------------------------------------------------------------------------------------
std::string Utf16Message(const std::string& source);
std::string ZeroByteMessage(const std::string& source, std::uint64_t line);
std::string NotUtf8Message(const std::string& source, std::uint64_t line);

// ---- The line that names the variables ------------------------------------------------------------------------------
std::string NoCasesMessage(const std::string& source, const HeaderLine& header);
std::string NumbersAsNamesMessage(const std::string& source, const HeaderLine& header);
std::string EmptyNameMessage(const std::string& source, std::uint64_t line, std::uint64_t column);
std::string DuplicateNameMessage(const std::string& source,
                                 std::uint64_t line,
                                 const std::string& name,
                                 std::uint64_t firstColumn,
                                 std::uint64_t secondColumn);

// ---- Variables and cases of files without lines; they count from 1
// ---------------------------------------------------
std::string NoVariablesMessage(const std::string& source);
std::string NoRowsMessage(const std::string& source);
std::string NamelessVariableMessage(const std::string& source, std::size_t variable);
std::string UnreadableNameMessage(const std::string& source, std::size_t variable);
std::string RepeatedNameMessage(const std::string& source,
                                const std::string& name,
                                std::size_t first,
                                std::size_t second);
std::string UnreadableTextMessage(const std::string& source, std::uint64_t caseNumber, const std::string& variable);
std::string InfiniteValueMessage(const std::string& source, std::uint64_t caseNumber, const std::string& variable);

// ---- Records and fields ---------------------------------------------------------------------------------------------
// `last` is the field that belongs to the last named column, `extra` the first one after it.
std::string TooManyFieldsMessage(const std::string& source,
                                 std::uint64_t line,
                                 std::uint64_t fields,
                                 const HeaderLine& header,
                                 const std::string& last,
                                 const std::string& extra,
                                 char delimiter);
std::string TooFewFieldsMessage(const std::string& source,
                                std::uint64_t line,
                                std::uint64_t fields,
                                const HeaderLine& header,
                                char delimiter);
// The place where the quote opens.
std::string UnclosedQuoteMessage(const TextPlace& place);
// The place of the text; `openLine` is the line on which the value begins.
std::string TextAfterQuoteMessage(const TextPlace& place, std::uint64_t openLine, char delimiter);
std::string QuoteInsideValueMessage(const TextPlace& place);
std::string TooLongValueMessage(const TextPlace& place);

// ---- Values ---------------------------------------------------------------------------------------------------------
std::string CommaNumberMessage(const TextPlace& place, const std::string& text);
std::string OutOfRangeMessage(const TextPlace& place, const std::string& text);
std::string NotFiniteMessage(const TextPlace& place, const std::string& text);
std::string NoSuchDayMessage(const TextPlace& place, const std::string& text);

}  // namespace orv
