#define TOML_EXCEPTIONS 0
#include "standalone/jobs/JobValue.h"

#include <toml++/toml.h>

#include <algorithm>

#include "standalone/jobs/JobMessages.h"
#include "standalone/jobs/JobWording.h"

namespace orv {

namespace {

JobValue::Table EntriesOf(const toml::table& table);

JobValue ValueOf(const toml::node& node) {
  JobValue value;
  value.Line = node.source().begin.line;
  if (const auto* flag = node.as_boolean()) {
    value.Content = flag->get();
  } else if (const auto* whole = node.as_integer()) {
    value.Content = whole->get();
  } else if (const auto* real = node.as_floating_point()) {
    value.Content = real->get();
  } else if (const auto* text = node.as_string()) {
    value.Content = text->get();
  } else if (const auto* list = node.as_array()) {
    JobValue::List items;
    for (const toml::node& item : *list) items.push_back(ValueOf(item));
    value.Content = std::move(items);
  } else if (const auto* table = node.as_table()) {
    value.Content = EntriesOf(*table);
  } else {
    value.Content = JobValue::Date{};
  }
  return value;
}

// The library keeps the entries of a table in the order of their names.
JobValue::Table EntriesOf(const toml::table& table) {
  struct Placed {
    toml::source_position Place;
    JobEntry Entry;
  };
  std::vector<Placed> placed;
  for (const auto& [key, node] : table) {
    const toml::source_position place = key.source().begin;
    placed.push_back({place, {std::string(key.str()), ValueOf(node), place.line}});
  }
  std::stable_sort(placed.begin(), placed.end(), [](const Placed& a, const Placed& b) { return a.Place < b.Place; });
  JobValue::Table entries;
  for (Placed& one : placed) entries.push_back(std::move(one.Entry));
  return entries;
}

// The library says first what it was about to read.
std::string FaultOf(const toml::parse_error& error) {
  const std::string text(error.description());
  constexpr std::string_view kHead = "Error while parsing ";
  const std::size_t colon = text.find(": ");
  return text.starts_with(kHead) && colon != std::string::npos ? text.substr(colon + 2) : text;
}

}  // namespace

JobValue::Table ParseJobText(std::string_view text, const std::string& file) {
  const toml::parse_result result = toml::parse(text);
  if (result) return EntriesOf(result.table());
  const toml::parse_error& error = result.error();
  throw JobError(JobMessages::NotToml(file, error.source().begin.line, FaultOf(error)));
}

}  // namespace orv
