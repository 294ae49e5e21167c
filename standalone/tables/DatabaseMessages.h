// The messages about databases that cannot be read: .orv files and SQLite databases of other programs.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orv {

// ---- .orv files -----------------------------------------------------------------------------------------------------
std::string ForeignDatabaseMessage(const std::string& path);
std::string NewerOrvMessage(const std::string& path, std::int64_t version, std::int64_t newest);
// `fault` follows "damaged: ".
std::string DamagedOrvMessage(const std::string& path, std::string_view fault);
std::string UnsortedTextsMessage(const std::string& path, const std::string& variable);
std::string UnknownTextCodeMessage(const std::string& path, const std::string& variable);
std::string NoNumberMessage(const std::string& path, std::uint64_t caseNumber, const std::string& variable);

// ---- Other databases
// -------------------------------------------------------------------------------------------------- What follows
// "sqlite:" is not FILE?table=NAME or FILE?query=SELECT...; `fault` says why.
std::string SqliteAddressMessage(const std::string& address, std::string_view fault);
std::string NoTablesMessage(const std::string& path);
std::string SeveralTablesMessage(const std::string& path, const std::vector<std::string>& tables);
std::string NoSuchTableMessage(const std::string& path,
                               const std::string& table,
                               const std::vector<std::string>& tables);
// `fault` is SQLite's own text.
std::string QueryMessage(const std::string& path, std::string_view fault);
std::string NotASelectMessage(const std::string& path);
std::string BinaryValueMessage(const std::string& source, std::uint64_t row, const std::string& variable);

}  // namespace orv
