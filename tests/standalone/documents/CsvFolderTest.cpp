#include <gtest/gtest.h>

#include "AwkwardDocuments.h"
#include "standalone/documents/CsvFolder.h"

namespace orv {
namespace {

// All files, each under its name.
std::string Written(const RunReport& report, const ResultDocuments& documents) {
  std::string all;
  WriteCsvFiles(report, documents, [&](const std::string& name, std::string_view content) {
    all += "== " + name + "\n" + std::string(content);
  });
  return all;
}

TEST(WriteCsvFiles, WritesFactsContentsAndEveryKindOfDocument) {
  ResultDocuments documents;
  documents.Add(AwkwardSheet()).Name = "estimates";
  documents.Add(CodeDocument());
  documents.Add(CurveDocument());
  EXPECT_EQ(Written(FullReport(), documents), R"(== 00-run.csv
item,value
Program,orvcox 1.2.3
Cases read,228
Cases in the analysis,225
Complete,163
Censored,62
Left out: missing values,2
Left out: status neither code,1
Missing in ph.ecog,1
Missing in ph_<karno>,1
Columns left out of the fit,"sex_2, a*b"
Converged,no
Iterations,50
Message,"First line.
Second <line>."
== 00-contents.csv
file,result,title
01-estimates.csv,estimates,"Estimates & <tests>
 * fixed
# second"
02-c.txt,c,C Code
03-plots.csv,plots,Survivor function
== 01-estimates.csv
Name,Level,P value,x|y
"<b>a&amp;""b""</b> | `c` *d* _e_ f_g",)" + Emoji +
                                                  R"(,1e-05,1.5
)" + Hebrew + R"(,,,-0.25
)" + LongLabel + ",\"a\nb\x1b[2J\xEF\xBF\xBD\",0.5,\n" +
                                                  R"(== 02-c.txt
if (a < b && c) {
	puts("```");
}== 03-plots.csv
Series,Time,Survival
Pattern 1,0,1
Pattern 1,5,0.5
Pattern 1,999,
)");
}

TEST(WriteCsvFiles, NamesWhatHasNoTitleAndLeavesOutEmptyRowNames) {
  ResultDocuments documents;
  documents.Add(VeteranSummary()).Name = "summary";
  documents.Add(Sheet({}, {"", ""}, {NumberColumn("Time", {1, 2})})).Name = "survivor";
  documents.Add(Sheet({}, {}, {}));
  const std::string written = Written({}, documents);
  EXPECT_NE(written.find("== 01-summary.csv\nname,value\n-2 Log L,948.794223429446\n"), std::string::npos) << written;
  EXPECT_NE(written.find("== 02-survivor.csv\nTime\n1\n2\n== 03-result.csv\n\n"), std::string::npos) << written;
}

}  // namespace
}  // namespace orv
