// The argument TABLE, which every command has.
#pragma once

namespace orv {

inline constexpr const char* kTableHelp =
    "A file: .csv, .tsv, .txt, .orv, .sas7bdat, .xpt, .sav, .zsav, .por, .dta, .db, .sqlite;\n"
    "sqlite:FILE?table=NAME or sqlite:FILE?query=SELECT...; or - for CSV from standard input";

}  // namespace orv
