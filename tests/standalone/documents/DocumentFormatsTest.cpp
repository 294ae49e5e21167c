#include <gtest/gtest.h>

#include <set>

#include "SampleDocuments.h"
#include "standalone/documents/DocumentFormats.h"

namespace orv {
namespace {

TEST(DocumentFormats, AreFoundByName) {
  for (const char* name : {"text", "markdown", "html", "json"}) {
    ASSERT_NE(FindFormatByName(name), nullptr) << name;
    EXPECT_EQ(FindFormatByName(name)->Name, name);
  }
  for (const char* name : {"", "JSON", "jso", "xml"}) EXPECT_EQ(FindFormatByName(name), nullptr) << name;
}

TEST(DocumentFormats, AreFoundByFileEndingInAnyCase) {
  struct {
    const char* fileName;
    const char* format;
  } const cases[] = {
      {"results.json", "json"}, {"out/a.b.JSON", "json"},   {"r.txt", "text"},     {".json", "json"},
      {"results", nullptr},     {"json", nullptr},          {"r.md", "markdown"},  {"r.HTML", "html"},
      {"r.htm", nullptr},       {"results.jsonl", nullptr}, {"out.txt/", nullptr}, {"", nullptr},
  };
  for (const auto& c : cases) {
    const DocumentFormat* const format = FindFormatByFileName(c.fileName);
    EXPECT_EQ(format == nullptr ? "" : format->Name, c.format == nullptr ? "" : c.format) << c.fileName;
  }
}

TEST(DocumentFormats, HaveNamesAndEndingsOfTheirOwnAndWriteTheSameBytesAgain) {
  ResultDocuments documents;
  documents.Add(VeteranSummary());
  documents.Add(VeteranEstimates());
  std::set<std::string_view> seen;
  for (const DocumentFormat& format : DocumentFormats()) {
    EXPECT_TRUE(seen.insert(format.Name).second) << format.Name;
    EXPECT_TRUE(seen.insert(format.FileEnding).second) << format.FileEnding;
    const std::string once = format.Write(RunReport{}, documents, WriteOptions{});
    EXPECT_NE(once.find("Goodness of fit"), std::string::npos) << format.Name;
    EXPECT_EQ(format.Write(RunReport{}, documents, WriteOptions{}), once) << format.Name;
  }
}

}  // namespace
}  // namespace orv
