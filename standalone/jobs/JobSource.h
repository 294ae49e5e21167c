// JobSource: the values of a job by their keys, each of the form that its key asks for.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/jobs/JobKeys.h"
#include "standalone/jobs/JobValue.h"
#include "standalone/jobs/JobWording.h"

namespace orv {

// One code or several that belong to a name, as texts.
struct NamedCodes {
  std::string Name;
  std::vector<std::string> Codes;
};

class JobSource {
 public:
  // Throws JobError for an unknown section or key, and for a value of another form than its key's.
  JobSource(std::string_view text, const std::string& file);

  // The functions below take a name of JobKeys() that has the form they give. A key that the job does not have is an
  // empty result. Numbers and codes come as the texts that the command line would be given.
  bool Has(std::string_view key) const { return Find(key) != nullptr; }
  std::optional<bool> Flag(std::string_view key) const;
  std::optional<std::int64_t> WholeNumber(std::string_view key) const;
  std::string Word(std::string_view key) const;  // a text, number or code
  std::vector<std::string> Texts(std::string_view key) const;
  std::vector<std::string> Codes(std::string_view key) const;
  std::vector<NamedCodes> CodesByName(std::string_view key) const;
  std::vector<std::string> Part(std::string_view key, std::string_view part) const;  // of the form StartValues
  std::vector<std::vector<std::string>> Functions(std::string_view key) const;
  std::vector<std::vector<NamedCodes>> Patterns(std::string_view key) const;
  // The key of a group that is true; null when none is. Throws JobError when two are.
  const JobKey* Chosen(ChoiceGroup group) const;

  // Throws JobError with the line of a key, or without a line when the job does not have it.
  [[noreturn]] void Fail(std::string_view key, const std::string& message) const;

  JobWording& Wording() { return m_wording; }
  const JobWording& Wording() const { return m_wording; }

 private:
  // Where a value stands, as messages tell it.
  struct Place {
    const JobKey& Key;
    std::string Name;  // of the key, with the part or factor that the value belongs to
    std::string Item;  // "item 2" of a list; empty outside lists
  };

  template <typename Item>
  using ItemOf = Item (JobSource::*)(const Place&, const JobValue&) const;

  const JobValue* Find(std::string_view key) const;
  void TakeSection(std::string_view section, const JobEntry& entry);
  void TakeEntry(std::string_view section, const JobEntry& entry);
  void Check(const JobKey& key, const JobValue& value) const;
  void CheckParts(const JobKey& key, const JobValue& value) const;
  [[noreturn]] void FailAt(std::uint64_t line, const std::string& message) const;
  [[noreturn]] void FailForUnknown(std::string_view section, const JobEntry& entry) const;
  [[noreturn]] void FailForForm(const Place& place, const JobValue& value) const;
  static Place PlaceOf(const JobKey& key);
  static Place PlaceOf(std::string_view key) { return PlaceOf(*FindJobKey(key)); }
  std::string TextOf(const Place& place, const JobValue& value) const;
  std::string NumberOf(const Place& place, const JobValue& value) const;
  std::string CodeOf(const Place& place, const JobValue& value) const;
  std::vector<std::string> NumbersOf(const Place& place, const JobValue& value) const;
  std::vector<NamedCodes> NamedCodesOf(const Place& place, const JobValue& value) const;
  template <typename Item>
  std::vector<Item> Items(const Place& place, const JobValue& value, ItemOf<Item> of) const;

  JobWording m_wording;
  std::map<std::string, JobValue, std::less<>> m_values;
};

}  // namespace orv
