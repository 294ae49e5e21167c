// `orvcox describe`: what a table holds.
#pragma once

#include <CLI/App.hpp>
#include <iosfwd>
#include <string>

namespace orv {

struct DescribeOptions {
  std::string Table;
};

// Declares the command. `options` must outlive `program`.
CLI::App* AddDescribeCommand(CLI::App& program, DescribeOptions& options);

// Lists the variables: type, valid and missing counts, range, labels. Returns the exit code. Throws TableError.
int RunDescribe(const DescribeOptions& options, std::ostream& out, std::ostream& err);

}  // namespace orv
