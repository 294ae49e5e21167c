#include "standalone/jobs/JobSource.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "standalone/documents/JsonText.h"
#include "standalone/jobs/CloseKeys.h"
#include "standalone/jobs/JobMessages.h"
#include "standalone/jobs/TomlText.h"

namespace orv {

namespace {

namespace Messages = JobMessages;

constexpr std::array kSections = {JobSections::Startup, JobSections::Results, JobSections::Host};
constexpr std::string_view kVariables = "Variables";  // the section within a section
constexpr std::array<std::string_view, 2> kParts = {"Values", "Fixed"};

bool IsSection(std::string_view name) {
  return std::find(kSections.begin(), kSections.end(), name) != kSections.end();
}

std::string_view KindOf(const JobValue& value) {
  if (value.As<bool>() != nullptr) return "true or false";
  if (value.As<std::int64_t>() != nullptr) return "a whole number";
  if (value.As<double>() != nullptr) return "a number with a fraction";
  if (value.As<std::string>() != nullptr) return "a text";
  if (value.As<JobValue::List>() != nullptr) return "such a list";
  const auto* table = value.As<JobValue::Table>();
  if (table == nullptr) return "a date";
  return table->empty() ? "an empty table" : "a table";
}

// A value that stands for a list of itself alone, or the items of a list.
std::vector<const JobValue*> ItemsOf(const JobValue& value) {
  const auto* list = value.As<JobValue::List>();
  if (list == nullptr) return {&value};
  std::vector<const JobValue*> items;
  for (const JobValue& item : *list) items.push_back(&item);
  return items;
}

bool IsListOfLists(const JobValue& value) {
  const auto* list = value.As<JobValue::List>();
  return list != nullptr && !list->empty() && list->front().As<JobValue::List>() != nullptr;
}

}  // namespace

JobSource::JobSource(std::string_view text, const std::string& file) : m_wording(file) {
  for (const JobEntry& entry : ParseJobText(text, file)) {
    IsSection(entry.Name) ? TakeSection(entry.Name, entry) : TakeEntry(JobSections::Top, entry);
  }
}

void JobSource::TakeSection(std::string_view section, const JobEntry& entry) {
  const auto* table = entry.Value.As<JobValue::Table>();
  if (table == nullptr) FailAt(entry.Line, Messages::NotASection(section));
  for (const JobEntry& inner : *table) {
    const bool isVariables = section == JobSections::Startup && inner.Name == kVariables;
    isVariables ? TakeSection(JobSections::Variables, inner) : TakeEntry(section, inner);
  }
}

void JobSource::TakeEntry(std::string_view section, const JobEntry& entry) {
  const JobKey* key = FindJobKey(entry.Name);
  if (key == nullptr || key->Section != section) FailForUnknown(section, entry);
  m_wording.AddKey(entry.Name, entry.Line);
  Check(*key, m_values.emplace(entry.Name, entry.Value).first->second);
}

void JobSource::FailForUnknown(std::string_view section, const JobEntry& entry) const {
  const bool isTable = entry.Value.As<JobValue::Table>() != nullptr;
  if (isTable && section == JobSections::Top) {
    FailAt(entry.Line, Messages::UnknownSection(entry.Name, CloseSections(entry.Name)));
  }
  const JobKey* other = FindJobKey(entry.Name);
  if (other != nullptr && other->Section == JobSections::Top) FailAt(entry.Line, Messages::BelongsAbove(entry.Name));
  if (other != nullptr) FailAt(entry.Line, Messages::UnknownKey(section, entry.Name, {}, other->Section));
  const std::vector<std::string> close = CloseKeys(entry.Name, section);
  const bool isSection = isTable && !close.empty() && close[0].starts_with('[');
  if (isSection) {
    FailAt(entry.Line, Messages::UnknownSection(std::string(section) + '.' + entry.Name, {close[0]}));
  }
  FailAt(entry.Line, Messages::UnknownKey(section, entry.Name, close, {}));
}

// ---- Values -----------------------------------------------------------------------------------------------------

void JobSource::Check(const JobKey& key, const JobValue& value) const {
  switch (key.Form) {
    case JobForm::Flag:
      if (value.As<bool>() == nullptr) FailForForm(PlaceOf(key), value);
      return;
    case JobForm::WholeNumber:
      if (value.As<std::int64_t>() == nullptr) FailForForm(PlaceOf(key), value);
      return;
    case JobForm::NotYet: {
      const bool* flag = value.As<bool>();
      if (flag == nullptr || *flag) FailAt(value.Line, Messages::NotYet(ShownName(key)));
      return;
    }
    case JobForm::Number:
      NumberOf(PlaceOf(key), value);
      return;
    case JobForm::Text:
      TextOf(PlaceOf(key), value);
      return;
    case JobForm::Texts:
      Texts(key.Name);
      return;
    case JobForm::Code:
      CodeOf(PlaceOf(key), value);
      return;
    case JobForm::Codes:
      Codes(key.Name);
      return;
    case JobForm::CodeByFactor:
    case JobForm::CodesByFactor:
      CodesByName(key.Name);
      return;
    case JobForm::StartValues:
      CheckParts(key, value);
      return;
    case JobForm::Functions:
      Functions(key.Name);
      return;
    case JobForm::Patterns:
      Patterns(key.Name);
      return;
  }
}

void JobSource::CheckParts(const JobKey& key, const JobValue& value) const {
  const auto* table = value.As<JobValue::Table>();
  if (table == nullptr || table->empty()) FailForForm(PlaceOf(key), value);
  for (const JobEntry& entry : *table) {
    if (std::find(kParts.begin(), kParts.end(), entry.Name) == kParts.end()) {
      FailAt(entry.Line, Messages::UnknownPart(ShownName(key), entry.Name));
    }
  }
  for (const std::string_view part : kParts) Part(key.Name, part);
}

JobSource::Place JobSource::PlaceOf(const JobKey& key) {
  return {key, ShownName(key), {}};
}

void JobSource::FailForForm(const Place& place, const JobValue& value) const {
  const std::string_view form = FormText(place.Key.Form);
  FailAt(value.Line, place.Item.empty() ? Messages::WrongForm(place.Name, form, KindOf(value))
                                        : Messages::WrongItem(place.Name, place.Item, form, KindOf(value)));
}

std::string JobSource::TextOf(const Place& place, const JobValue& value) const {
  const auto* text = value.As<std::string>();
  if (text == nullptr) FailForForm(place, value);
  if (text->empty()) FailAt(value.Line, Messages::EmptyText(place.Name));
  return *text;
}

std::string JobSource::NumberOf(const Place& place, const JobValue& value) const {
  if (const auto* whole = value.As<std::int64_t>()) return std::to_string(*whole);
  const auto* real = value.As<double>();
  if (real == nullptr) FailForForm(place, value);
  if (!std::isfinite(*real)) FailAt(value.Line, Messages::NotFinite(place.Name));
  return ShortestNumberText(*real);
}

std::string JobSource::CodeOf(const Place& place, const JobValue& value) const {
  return value.As<std::string>() == nullptr ? NumberOf(place, value) : TextOf(place, value);
}

template <typename Item>
std::vector<Item> JobSource::Items(const Place& place, const JobValue& value, ItemOf<Item> of) const {
  const bool isList = value.As<JobValue::List>() != nullptr;
  std::vector<Item> items;
  for (const JobValue* item : ItemsOf(value)) {
    Place own = place;
    if (isList) own.Item = Messages::ItemOfList(items.size() + 1, place.Item);
    items.push_back((this->*of)(own, *item));
  }
  if (items.empty()) FailAt(value.Line, Messages::EmptyList(place.Name));
  return items;
}

std::vector<NamedCodes> JobSource::NamedCodesOf(const Place& place, const JobValue& value) const {
  const auto* table = value.As<JobValue::Table>();
  if (table == nullptr || table->empty()) FailForForm(place, value);
  std::vector<NamedCodes> named;
  for (const JobEntry& entry : *table) {
    if (entry.Name.empty()) FailAt(entry.Line, Messages::EmptyText(place.Name));
    const auto* inner = entry.Value.As<JobValue::Table>();
    if (inner != nullptr && !inner->empty()) {
      FailAt(entry.Line, Messages::NameWithDot(place.Name, entry.Name + '.' + inner->front().Name));
    }
    const Place own = {place.Key, place.Name + '.' + TomlName(entry.Name), place.Item};
    const bool isList = entry.Value.As<JobValue::List>() != nullptr;
    if (isList && place.Key.Form != JobForm::CodesByFactor) FailForForm(own, entry.Value);
    named.push_back({entry.Name, Items(own, entry.Value, &JobSource::CodeOf)});
  }
  return named;
}

std::vector<std::string> JobSource::NumbersOf(const Place& place, const JobValue& value) const {
  return Items(place, value, &JobSource::NumberOf);
}

// ---- What keys hold ---------------------------------------------------------------------------------------------

const JobValue* JobSource::Find(std::string_view key) const {
  const auto found = m_values.find(key);
  return found == m_values.end() ? nullptr : &found->second;
}

std::optional<bool> JobSource::Flag(std::string_view key) const {
  const JobValue* value = Find(key);
  return value == nullptr ? std::nullopt : std::optional(*value->As<bool>());
}

std::optional<std::int64_t> JobSource::WholeNumber(std::string_view key) const {
  const JobValue* value = Find(key);
  return value == nullptr ? std::nullopt : std::optional(*value->As<std::int64_t>());
}

std::string JobSource::Word(std::string_view key) const {
  const JobValue* value = Find(key);
  return value == nullptr ? "" : CodeOf(PlaceOf(key), *value);
}

std::vector<std::string> JobSource::Texts(std::string_view key) const {
  const JobValue* value = Find(key);
  if (value == nullptr) return {};
  return Items(PlaceOf(key), *value, &JobSource::TextOf);
}

std::vector<std::string> JobSource::Codes(std::string_view key) const {
  const JobValue* value = Find(key);
  if (value == nullptr) return {};
  return Items(PlaceOf(key), *value, &JobSource::CodeOf);
}

std::vector<NamedCodes> JobSource::CodesByName(std::string_view key) const {
  const JobValue* value = Find(key);
  if (value == nullptr) return {};
  return NamedCodesOf(PlaceOf(key), *value);
}

std::vector<std::string> JobSource::Part(std::string_view key, std::string_view part) const {
  const JobValue* value = Find(key);
  if (value == nullptr) return {};
  for (const JobEntry& entry : *value->As<JobValue::Table>()) {
    const JobKey& known = *FindJobKey(key);
    if (entry.Name == part) return NumbersOf({known, ShownName(known) + '.' + entry.Name, {}}, entry.Value);
  }
  return {};
}

std::vector<std::vector<std::string>> JobSource::Functions(std::string_view key) const {
  const JobValue* value = Find(key);
  if (value == nullptr) return {};
  const Place known = PlaceOf(key);
  if (!IsListOfLists(*value)) return {NumbersOf(known, *value)};
  return Items(known, *value, &JobSource::NumbersOf);
}

std::vector<std::vector<NamedCodes>> JobSource::Patterns(std::string_view key) const {
  const JobValue* value = Find(key);
  if (value == nullptr) return {};
  return Items(PlaceOf(key), *value, &JobSource::NamedCodesOf);
}

const JobKey* JobSource::Chosen(ChoiceGroup group) const {
  const JobKey* chosen = nullptr;
  for (const JobKey& key : JobKeys()) {
    if (key.Group != group || !Flag(key.Name).value_or(false)) continue;
    if (chosen != nullptr) {
      Fail(key.Name, Messages::TwoChosen(ShownName(key), ShownName(*chosen), m_wording.LineOf(chosen->Name)));
    }
    chosen = &key;
  }
  return chosen;
}

void JobSource::Fail(std::string_view key, const std::string& message) const {
  FailAt(m_wording.LineOf(key), message);
}

void JobSource::FailAt(std::uint64_t line, const std::string& message) const {
  throw JobError(Messages::At(m_wording.File(), line, message));
}

}  // namespace orv
