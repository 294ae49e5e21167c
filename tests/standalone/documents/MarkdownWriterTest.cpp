#include <gtest/gtest.h>

#include "AwkwardDocuments.h"
#include "standalone/documents/MarkdownWriter.h"

namespace orv {
namespace {

TEST(WriteMarkdown, WritesFactsAndEveryKindOfDocument) {
  EXPECT_EQ(WriteMarkdown(FullReport(), AwkwardDocuments(), {}), R"(# Cox regression

- Program: orvcox 1.2.3
- Cases read: 228
- Cases in the analysis: 225
- Complete: 163
- Censored: 62
- Left out: missing values: 2
- Left out: status neither code: 1
- Missing in ph.ecog: 1
- Missing in ph\_\<karno\>: 1
- Columns left out of the fit: sex_2, a\*b
- Converged: no
- Iterations: 50
- Message: First line. Second \<line\>.

## Estimates & \<tests\>

\* fixed\
\# second

| Name                                     | Level     |    P value |        x\|y |
| ---------------------------------------- | --------- | ---------: | ----------: |
| **\<b\>a\&amp;"b"\</b\> \| \`c\` \*d\* \_e\_ f_g** | **)" + Emoji + R"(**    | **<.0001** | **1.50000** |
| )" + Hebrew + R"(                                      |           |            |    -0.25000 |
| )" + LongLabel + " | a b\xEF\xBF\xBD\\[2J\xEF\xBF\xBD |     0.5000 |             |\n" +
                                                                     R"(
## C Code

````
if (a < b && c) {
	puts("```");
}
````

## Survivor function

| Series    | Points | Time from | Time to | Survival from | Survival to |
| --------- | -----: | --------: | ------: | ------------: | ----------: |
| Pattern 1 |      3 |         0 |     999 |      0.500000 |           1 |
)");
}

TEST(WriteMarkdown, SetsTheWholeParameterTableInOnePiece) {
  ResultDocuments documents;
  documents.Add(VeteranEstimates());
  const std::string text = WriteMarkdown({}, documents, {});
  EXPECT_NE(
      text.find("| **celltype** |           **1** |      **-0.614730** |   **0.176770** | **12.0934** | **0.0005** "),
      std::string::npos)
      << text;
  EXPECT_NE(
      text.find("| age          |                 |          -0.008706 |       0.009300 |      0.8764 |     0.3492 "),
      std::string::npos)
      << text;
  const std::string withFacts = "# Cox regression\n\n## Parameter Estimates\n\n|";
  EXPECT_EQ(text.substr(0, withFacts.size()), withFacts);
}

TEST(WriteMarkdown, WritesAHeaderAloneForARefusedRun) {
  RunReport report;
  report.Messages = {{1, "No."}};
  EXPECT_EQ(WriteMarkdown(report, {}, {}), "# Cox regression\n\n- Message: No.\n");
  ResultDocuments empty;
  empty.Add(Sheet({"Empty"}, {}, {}));
  EXPECT_EQ(WriteMarkdown({}, empty, {}), "# Cox regression\n\n## Empty\n");
}

}  // namespace
}  // namespace orv
