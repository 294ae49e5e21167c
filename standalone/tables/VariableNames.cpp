#include "standalone/tables/VariableNames.h"

#include <string_view>
#include <unordered_map>

#include "standalone/tables/CellText.h"
#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"
#include "standalone/tables/TextCheck.h"

namespace orv {

std::vector<std::string> CheckedVariableNames(const std::string& source, std::vector<std::string> names) {
  if (names.empty()) throw TableError(NoVariablesMessage(source));
  if (names.size() > static_cast<std::size_t>(kMaximumVariables)) throw TableError(TooManyVariablesMessage(source));
  for (std::string& name : names) name = std::string(TrimBlanks(name));
  std::unordered_map<std::string_view, std::size_t> numbers;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i].empty()) throw TableError(NamelessVariableMessage(source, i + 1));
    if (!IsSoundText(names[i])) throw TableError(UnreadableNameMessage(source, i + 1));
    const auto [found, isNew] = numbers.emplace(names[i], i + 1);
    if (!isNew) throw TableError(RepeatedNameMessage(source, names[i], found->second, i + 1));
  }
  return names;
}

}  // namespace orv
