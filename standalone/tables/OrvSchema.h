// The schema of .orv files, shared by their reader and their writer. docs/file-formats.md describes it.
#pragma once

#include <cstdint>

namespace orv::OrvSchema {

inline constexpr std::int64_t ApplicationId = 0x4F727643;  // "OrvC"; tells our files from other databases
inline constexpr std::int64_t Version = 1;                 // raised when a reader of this version would misread a file

// A table of SQLite has at most 2000 columns; the cases of more variables than this are cut into several tables.
inline constexpr int VariablesPerTable = 1000;

inline constexpr const char* CreateVariables =
    "CREATE TABLE variables (\n"
    "  number INTEGER PRIMARY KEY,  -- the order of the variables, from 1\n"
    "  name TEXT NOT NULL UNIQUE,\n"
    "  type TEXT NOT NULL,          -- number, text (codes 1 to K of value_labels) or date (days since 1970-01-01)\n"
    "  missing_code REAL,           -- what stands for a missing value in memory; NULL: the usual one\n"
    "  format TEXT NOT NULL,        -- as the program shows it that the table came from\n"
    "  label TEXT NOT NULL,         -- the variable in words\n"
    "  case_table TEXT NOT NULL,    -- where its values stand\n"
    "  case_column TEXT NOT NULL)";

inline constexpr const char* CreateValueLabels =
    "CREATE TABLE value_labels (\n"
    "  variable INTEGER NOT NULL,   -- number of the variable\n"
    "  code REAL NOT NULL,\n"
    "  text TEXT NOT NULL,\n"
    "  PRIMARY KEY (variable, code)) WITHOUT ROWID";

}  // namespace orv::OrvSchema
