// What is said about a job file that is none, or that says something wrong. One function a message; `key` is a key as
// ShownName gives it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orv::JobMessages {

// "trial.toml:7: ..."; without the line when it is 0.
std::string At(const std::string& file, std::uint64_t line, const std::string& message);

std::string NotToml(const std::string& file, std::uint64_t line, const std::string& fault);
// `isTable` for a section or a table in braces.
std::string StandsTwice(const std::string& file, std::uint64_t line, bool isTable);
std::string NumberOutOfRange(const std::string& file, std::uint64_t line, const std::string& number);
std::string TooLarge(const std::string& file, std::size_t limit);
// `close` is as CloseKeys gives it, here and below. `section` is empty above the first section; `other` is the section
// that has the key, empty when none has.
std::string UnknownKey(std::string_view section,
                       const std::string& key,
                       const std::vector<std::string>& close,
                       std::string_view other);
std::string BelongsAbove(const std::string& key);
std::string UnknownSection(const std::string& section, const std::vector<std::string>& close);
std::string NotASection(std::string_view section);
std::string KeyMissing(const std::string& key, std::string_view purpose);
std::string WrongForm(const std::string& key, std::string_view form, std::string_view found);
// An item of a list as messages name it, such as "item 2"; `outer` is the item that is this list, empty for none.
std::string ItemOfList(std::size_t number, const std::string& outer);
std::string WrongItem(const std::string& key, const std::string& item, std::string_view form, std::string_view found);
std::string EmptyText(const std::string& key);
std::string EmptyList(const std::string& key);
std::string NotFinite(const std::string& key);
// For a table where codes are due: what a name with a dot does.
std::string NameWithDot(const std::string& key, const std::string& name);
std::string NotYet(const std::string& key);
std::string TwoChosen(const std::string& key, const std::string& other, std::uint64_t otherLine);
std::string SameControl(const std::string& key, const std::string& other, std::uint64_t otherLine);
std::string SurvivalTimesCount(std::size_t given);
std::string InputTypeDiffers(const std::string& key, std::string_view needs);
std::string TimesInTwoForms(const std::string& key, std::uint64_t otherLine);
std::string NamesAndExpressions(std::size_t names, std::size_t expressions);
std::string EqualsInName(const std::string& name);
std::string NotOneEffect(const std::string& text);
std::string StartValuesUnused();
std::string StartValuesMissing();
std::string StartValuesTwice(std::uint64_t otherLine);
std::string UnknownPart(const std::string& key, const std::string& part);
std::string PatternCount(std::int64_t told, std::size_t given);
std::string NoResidual();
std::string NoFunction();
std::string NoOutput();
std::string ComputeWithoutSummary(const std::string& key);
std::string TypeWithoutLimits(const std::string& key, std::uint64_t otherLine);

}  // namespace orv::JobMessages
