// JobWording: what the program says about an analysis, in the words of a job file.
//
// Messages name the options of the command line. Who wrote a job has not written any, so each is told as the key that
// says the same, and a refusal begins with the line of the key.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/analysis/AnalysisDefinition.h"

namespace orv {

// A refusal that names its file and key already.
class JobError : public DefinitionError {
 public:
  using DefinitionError::DefinitionError;
};

class JobWording {
 public:
  explicit JobWording(std::string file) : m_file(std::move(file)) {}

  // A key that the job has, a name of JobKeys(), on this line.
  void AddKey(std::string_view key, std::uint64_t line);
  // A piece of a message that means `key` more exactly than its option does, such as "--time-covariate late:".
  void AddPhrase(const std::string& phrase, std::string_view key, const std::string& replacement);

  // The line of a key; 0 when the job does not have it.
  std::uint64_t LineOf(std::string_view key) const;
  const std::string& File() const { return m_file; }

  // A message with its options replaced. What stands in double quotes is the person's own and stays.
  std::string Sentence(const std::string& message) const;
  // The same behind the file and the line of the first key in it that the job has.
  std::string Refusal(const std::string& message) const;
  // A message about a file that the job names, behind the line and the name of the key that names it.
  std::string FileFailure(std::string_view key, const std::string& message) const;

 private:
  struct Phrase {
    std::string Text;
    std::string Key;
    std::string Replacement;
  };
  struct Translation {
    std::string Text;
    std::uint64_t Line = 0;
  };

  Translation Translate(const std::string& message) const;
  // Takes the option at the beginning of `rest`, and words of it that follow; empty when there is none.
  std::string TakeOption(std::string_view& rest, std::vector<std::string_view>& keys) const;
  std::vector<std::string_view> KeysOf(std::string_view option) const;

  std::string m_file;
  std::map<std::string, std::uint64_t, std::less<>> m_lines;
  std::vector<Phrase> m_phrases;
};

}  // namespace orv
