// Files of every form with the same table in them, for the tests of their readers.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/tables/MemoryTable.h"

struct readstat_writer_s;

namespace orv::testing {

// A small study in delimited text: numbers, fractions, a text, a date and missing values. Its names are as the
// narrowest form takes them, up to eight capital letters.
extern const std::string_view kSampleText;

// The endings of the files of other statistics programs.
const std::vector<std::string>& StatisticsEndings();

// Writes a table in the form of such an ending: texts as texts, dates in the program's own count of them, missing
// values as system-missing.
void WriteStatisticsFile(const MemoryTable& table, const std::string& path);

// Writes a file of such an ending: `fill` is called with a writer to which it adds variables, and then again for the
// cases. Throws std::runtime_error with the writer's message.
struct StatisticsContent {
  std::function<void(readstat_writer_s*)> Declare;  // adds labels and variables
  std::function<void(readstat_writer_s*)> Fill;     // adds as many rows as told
  long Rows = 0;
  int Version = 0;  // of the form; 0 for the usual one
};
void WriteStatisticsFile(const std::string& path, const StatisticsContent& content);

// Runs statements on a new or existing SQLite file. Throws std::runtime_error with SQLite's message.
void RunSql(const std::string& path, const std::string& statements);
// The first value that a query gives, as text.
std::string SqlValue(const std::string& path, const std::string& query);

// Writes a table as a database of another program: one table "cases", texts and dates as texts.
void WriteForeignDatabase(const MemoryTable& table, const std::string& path);

std::string ContentOfFile(const std::string& path);
void WriteContent(const std::string& path, std::string_view content);

// What reading a file says when it is refused; "(it reads)" when it is not.
std::string RefusalOf(const std::string& path);

}  // namespace orv::testing
