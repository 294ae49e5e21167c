#include <gtest/gtest.h>

#include <set>

#include "SampleDocuments.h"
#include "standalone/documents/DocumentFormats.h"
#include "support/ZipListing.h"

namespace orv {
namespace {

// The files of a form that is a folder stand one behind the other.
std::string Written(const DocumentFormat& format, const ResultDocuments& documents) {
  if (format.Name == "xlsx") return testing::ListZip(format.Write({}, documents, {}));
  if (format.WriteFiles == nullptr) return format.Write({}, documents, {});
  std::string all;
  format.WriteFiles({}, documents,
                    [&](const std::string& name, std::string_view content) { all += name + std::string(content); });
  return all;
}

TEST(DocumentFormats, AreFoundByName) {
  for (const char* name : {"text", "markdown", "html", "json", "xlsx", "csv"}) {
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
      {"results.json", "json"},
      {"out/a.b.JSON", "json"},
      {"r.txt", "text"},
      {".json", "json"},
      {"results", nullptr},
      {"json", nullptr},
      {"r.md", "markdown"},
      {"r.HTML", "html"},
      {"r.htm", nullptr},
      {"r.xlsx", "xlsx"},
      {"r.xls", nullptr},
      {"out/", "csv"},
      {"out", nullptr},
      {"out.csv", nullptr},
      {"results.jsonl", nullptr},
      {"out.txt/", "csv"},
      {"", nullptr},
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
    const std::string once = Written(format, documents);
    EXPECT_NE(once.find("Goodness of fit"), std::string::npos) << format.Name;
    EXPECT_EQ(Written(format, documents), once) << format.Name;
  }
}

}  // namespace
}  // namespace orv
