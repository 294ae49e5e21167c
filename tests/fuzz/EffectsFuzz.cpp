// Any text is a list of effects or refused with a message, and effects can be written down again.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Require.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/EffectSyntax.h"

namespace orv::fuzz {

namespace {

std::string Quoted(const std::string& name) {
  std::string quoted = "\"";
  for (const char c : name) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

std::string QuotedNames(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : "*") + Quoted(name);
  return text;
}

// The name needs no quotes.
bool IsPlain(const std::string& name) {
  return !name.empty() && name.find_first_of(",*()\"") == std::string::npos &&
         std::string_view(" \t").find(name.front()) == std::string_view::npos &&
         std::string_view(" \t").find(name.back()) == std::string_view::npos;
}

bool IsPlain(const WrittenEffect& effect) {
  const auto plain = [](const std::string& name) { return IsPlain(name); };
  return std::all_of(effect.Crossed.begin(), effect.Crossed.end(), plain) &&
         std::all_of(effect.Nesting.begin(), effect.Nesting.end(), plain);
}

// The text is one effect, of these names.
void RequireSame(const std::string& text, const WrittenEffect& effect, const char* what) {
  const std::vector<WrittenEffect> again = ParseEffects(text);
  Require(again.size() == 1 && again[0].Crossed == effect.Crossed && again[0].Nesting == effect.Nesting, what);
}

void CheckEffect(const WrittenEffect& effect) {
  Require(!effect.Crossed.empty(), "an effect has a name");
  RequireSame(effect.Text, effect, "the text of an effect is that effect");
  const std::string nesting = effect.Nesting.empty() ? "" : "(" + QuotedNames(effect.Nesting) + ")";
  RequireSame(QuotedNames(effect.Crossed) + nesting, effect, "an effect with quoted names is the same effect");
  if (IsPlain(effect)) RequireSame(EffectName(effect), effect, "the name of an effect of plain names is that effect");
}

}  // namespace

}  // namespace orv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orv::fuzz;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::vector<orv::WrittenEffect> effects;
  try {
    effects = orv::ParseEffects(text);
  } catch (const orv::DefinitionError& error) {
    Require(error.what()[0] != '\0', "a refusal has a message");
    return 0;
  }
  Require(!effects.empty(), "a text that is not refused has an effect");
  // What has been taken must be taken again: a DefinitionError from here on is a fault.
  for (const orv::WrittenEffect& effect : effects) CheckEffect(effect);
  return 0;
}
