#include "apps/orvcox/Arguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/CloseNames.h"

namespace orv {

namespace {

[[noreturn]] void Fail(const std::string& message) {
  throw DefinitionError(message);
}

bool AsksForHelp(const std::vector<std::string>& arguments) {
  return std::any_of(arguments.begin(), arguments.end(),
                     [](const auto& argument) { return argument == "--help" || argument == "-h"; });
}

const CLI::Option* FindOption(const CLI::App& command, const std::string& name) {
  for (const CLI::Option* option : command.get_options()) {
    if (option->nonpositional() && option->check_name(name)) return option;
  }
  return nullptr;
}

[[noreturn]] void FailForUnknown(const CLI::App& command, const std::string& name) {
  std::vector<std::string_view> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& longName : option->get_lnames()) names.emplace_back(longName);
  }
  const std::string letters = name.substr(std::min(name.find_first_not_of('-'), name.size()));
  const std::vector<std::string> close = CloseNames(letters, names, 1);
  Fail(fmt::format("{}: no such option.{}", name, close.empty() ? "" : fmt::format(" Closest: --{}.", close[0])));
}

class ArgumentWalk {
 public:
  ArgumentWalk(const CLI::App& command,
               const std::vector<std::string>& arguments,
               const std::vector<FileArgument>& files)
      : m_command(command), m_arguments(arguments), m_files(files) {}

  std::vector<std::string> Walk() {
    while (m_next < m_arguments.size()) {
      const std::string& argument = m_arguments[m_next++];
      const bool isOption = argument.size() > 1 && argument[0] == '-';
      isOption ? WalkOption(argument) : WalkFile(argument);
    }
    if (m_filesGiven < m_files.size()) {
      const FileArgument& missing = m_files[m_filesGiven];
      Fail(fmt::format("{} is missing: name {}.", missing.Name, missing.What));
    }
    return m_checked;
  }

 private:
  void WalkFile(const std::string& argument) {
    if (m_filesGiven == m_files.size()) FailForExtra(argument);
    if (argument.empty()) Fail(fmt::format("{}: the name is empty.", m_files[m_filesGiven].Name));
    ++m_filesGiven;
    m_checked.push_back(argument);
  }

  [[noreturn]] void FailForExtra(const std::string& argument) const {
    std::string names;
    for (const FileArgument& file : m_files) names += (names.empty() ? "" : " and ") + file.Name;
    Fail(fmt::format("\"{}\" belongs to no option, and {} {} given already. Lists have no blanks: a,b,c.", argument,
                     names, m_files.size() == 1 ? "is" : "are"));
  }

  void WalkOption(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const CLI::Option* option = FindOption(m_command, name);
    if (option == nullptr) FailForUnknown(m_command, name);
    const bool isRepeatable = option->get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    if (!m_given.insert(option).second && !isRepeatable) Fail(fmt::format("{} is given twice.", name));

    const int count = option->get_items_expected_max();
    if (count == 0) {
      if (equals != std::string::npos) Fail(fmt::format("{} takes no value.", name));
      m_checked.push_back(argument);
      return;
    }
    std::vector<std::string> values;
    if (equals != std::string::npos) values.push_back(argument.substr(equals + 1));
    while (static_cast<int>(values.size()) < count && NextIsValue()) values.push_back(m_arguments[m_next++]);
    const std::string form = fmt::format("({} {})", name, option->get_type_name());
    if (static_cast<int>(values.size()) < count) {
      Fail(count == 1 ? fmt::format("{}: the value is missing {}.", name, form)
                      : fmt::format("{}: {} of {} values given {}.", name, values.size(), count, form));
    }
    const bool hasEmpty = std::any_of(values.begin(), values.end(), [](const auto& value) { return value.empty(); });
    if (hasEmpty) Fail(fmt::format("{}: the value is empty {}.", name, form));
    m_checked.push_back(fmt::format("{}={}", name, values[0]));
    m_checked.insert(m_checked.end(), values.begin() + 1, values.end());
  }

  // A value may begin with a dash, as a negative number does, but an option in its place means that it was forgotten.
  bool NextIsValue() const {
    if (m_next == m_arguments.size()) return false;
    const std::string& next = m_arguments[m_next];
    return !next.starts_with("--") && FindOption(m_command, next) == nullptr;
  }

  const CLI::App& m_command;
  const std::vector<std::string>& m_arguments;
  const std::vector<FileArgument>& m_files;
  std::size_t m_next = 0;
  std::size_t m_filesGiven = 0;
  std::set<const CLI::Option*> m_given;
  std::vector<std::string> m_checked;
};

}  // namespace

std::vector<std::string> CheckArguments(const CLI::App& command,
                                        const std::vector<std::string>& arguments,
                                        const std::vector<FileArgument>& files) {
  if (AsksForHelp(arguments)) return arguments;
  return ArgumentWalk(command, arguments, files).Walk();
}

}  // namespace orv
