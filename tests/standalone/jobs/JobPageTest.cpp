// docs/jobs.md has the table of keys as the program knows them.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/jobs/JobKeys.h"
#include "standalone/jobs/ReadJob.h"

namespace orv {
namespace {

std::string OptionsOf(std::string_view key) {
  std::string text;
  for (const OptionSynonym& synonym : OptionSynonyms()) {
    if (synonym.Key != key) continue;
    text += text.empty() ? "`" : ", `";
    text += std::string(synonym.Option) + (synonym.Word.empty() ? "" : " " + std::string(synonym.Word)) + '`';
  }
  return text;
}

std::string RowOf(const JobKey& key) {
  std::string row = "| `" + std::string(key.Name) + "` | " + std::string(FormText(key.Form)) + " | ";
  row += OptionsOf(key.Name) + " | " + std::string(key.Help) + " |";
  return row;
}

std::string TableOfKeys() {
  std::string text;
  std::string_view section = "none";
  for (const JobKey& key : JobKeys()) {
    if (key.Section != section) {
      text += "\n### " + (key.Section.empty() ? "Above the first section" : "`[" + std::string(key.Section) + "]`");
      text += "\n\n| key | value | option | meaning |\n| --- | --- | --- | --- |\n";
    }
    section = key.Section;
    text += RowOf(key) + '\n';
  }
  return text;
}

std::string Page() {
  std::ifstream file(std::string(ORV_SOURCE_DIR) + "/docs/jobs.md");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(JobPage, HasTheKeysAsTheProgramKnowsThem) {
  const std::string page = Page();
  EXPECT_NE(page.find(TableOfKeys()), std::string::npos) << "docs/jobs.md should hold:\n" << TableOfKeys();
}

TEST(JobPage, ShowsAJobThatIsOne) {
  const std::string page = Page();
  const std::string fence = "```toml\n";
  const std::size_t start = page.find(fence);
  ASSERT_NE(start, std::string::npos);
  const std::string job =
      page.substr(start + fence.size(), page.find("```", start + fence.size()) - start - fence.size());
  EXPECT_EQ(ReadJob(job, "veteran.toml").Read.Definition.Ties, "efron");
}

}  // namespace
}  // namespace orv
