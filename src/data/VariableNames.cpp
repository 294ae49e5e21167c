#include "data/VariableNames.h"

#include "host/Host.h"

namespace orv {

std::string VariableName(Host& host, int variable) {
  std::string name;
  if (host.GetVarNameEx(1, variable - 1, name) != 0) return {};
  name = host.ExpandPossible8CharHash(name);
  const std::size_t first = name.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  name = name.substr(first, name.find_last_not_of(' ') - first + 1);
  return host.StripFormatting(name);
}

}  // namespace orv
