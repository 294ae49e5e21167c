// JobValue: the values of a job file with the lines on which they stand, in the order of the file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orv {

struct JobEntry;

struct JobValue {
  using List = std::vector<JobValue>;
  using Table = std::vector<JobEntry>;  // a section, or a table in braces; each name stands once
  struct Date {};                       // dates and times of day, which no key of a job takes

  std::variant<bool, std::int64_t, double, std::string, List, Table, Date> Content;
  std::uint64_t Line = 0;  // from 1

  template <typename Type>
  const Type* As() const {
    return std::get_if<Type>(&Content);
  }
};

struct JobEntry {
  std::string Name;
  JobValue Value;
  std::uint64_t Line = 0;  // of the name
};

// The sections and values of a text in TOML 1.0. Throws JobError with `file`, the line and the fault.
JobValue::Table ParseJobText(std::string_view text, const std::string& file);

}  // namespace orv
