// The groups of the report: which columns the line of a case has, and against what its cost should grow.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "CaseResult.h"
#include "MachineSpeed.h"

namespace orv::bench {

struct TableColumn {
  const char* Title;
  int Width;
  std::function<std::string(const CaseResult&, const MachineSpeed&)> Cell;
};

// A table of costs at several sizes, below the lines of the cases. The cases of several groups may share one.
struct Growth {
  const char* Heading;
  const char* Unit;  // whose cost is told: "case"
  const char* UnitFigure;
  const char* Size;  // against which: "n"
  const char* SizeFigure;
};

struct Group {
  std::string_view Name;  // the head of the names of its cases
  std::vector<TableColumn> Columns;
  const Growth* Cost;  // null for cases that are sizes of nothing
};

// All growths, in the order in which they are printed.
const std::vector<const Growth*>& Growths();

// The group of a case, by its name. Every case has one.
const Group& GroupOf(std::string_view name);

// Not of one number of decimals, but with as many as three digits that count need.
std::string ThreeDigits(double value);

}  // namespace orv::bench
