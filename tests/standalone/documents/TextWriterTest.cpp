#include <gtest/gtest.h>

#include "SampleDocuments.h"
#include "standalone/documents/DisplayText.h"
#include "standalone/documents/TextWriter.h"

namespace orv {
namespace {

std::string Written(const ResultDocument& document, int width = 80, bool bold = false) {
  ResultDocuments documents;
  documents.Add(document);
  return WriteText(RunReport{}, documents, WriteOptions{width, bold});
}

TEST(WriteText, CutsTheParameterTableIntoTwoBlocksAt80Columns) {
  EXPECT_EQ(Written(VeteranEstimates(), 80), R"(Parameter Estimates
===================

          Level of  Parameter  Standard
            Effect   Estimate     Error  Chi-square  P value
------------------------------------------------------------
karno               -0.032815  0.005508     35.4980   <.0001
diagtime            8.132e-05  0.009136   7.923e-05   0.9929
age                 -0.008706  0.009300      0.8764   0.3492
prior                0.007159  0.023231      0.0950   0.7579
trt              1  -0.147301  0.103775      2.0148   0.1558
celltype         1  -0.614730  0.176770     12.0934   0.0005
celltype         2   0.246831  0.159346      2.3995   0.1214
celltype         3   0.581337  0.185199      9.8532   0.0017

                                                   95% Hazard  95% Hazard
          Level of  95% Lower  95% Upper   Hazard       Ratio       Ratio
            Effect         CL         CL    Ratio    Lower CL    Upper CL
-------------------------------------------------------------------------
karno               -0.043610  -0.022020  0.96772     0.95733     0.97822
diagtime            -0.017825   0.017988  1.00008     0.98233     1.01815
age                 -0.026935   0.009522  0.99133     0.97342     1.00957
prior               -0.038372   0.052690  1.00719     0.96236     1.05410
trt              1  -0.350696   0.056093  0.74483     0.49589     1.11872
celltype         1  -0.961193  -0.268266  0.37433     0.19420     0.72151
celltype         2  -0.065481   0.559143  1.58450     0.94034     2.66993
celltype         3   0.218353   0.944321  2.21394     1.22280     4.00845
)");
}

TEST(WriteText, ShowsTheParameterTableInOnePieceAt200Columns) {
  EXPECT_EQ(Written(VeteranEstimates(), 200), R"(Parameter Estimates
===================

                                                                                             95% Hazard  95% Hazard
          Level of  Parameter  Standard                       95% Lower  95% Upper   Hazard       Ratio       Ratio
            Effect   Estimate     Error  Chi-square  P value         CL         CL    Ratio    Lower CL    Upper CL
-------------------------------------------------------------------------------------------------------------------
karno               -0.032815  0.005508     35.4980   <.0001  -0.043610  -0.022020  0.96772     0.95733     0.97822
diagtime            8.132e-05  0.009136   7.923e-05   0.9929  -0.017825   0.017988  1.00008     0.98233     1.01815
age                 -0.008706  0.009300      0.8764   0.3492  -0.026935   0.009522  0.99133     0.97342     1.00957
prior                0.007159  0.023231      0.0950   0.7579  -0.038372   0.052690  1.00719     0.96236     1.05410
trt              1  -0.147301  0.103775      2.0148   0.1558  -0.350696   0.056093  0.74483     0.49589     1.11872
celltype         1  -0.614730  0.176770     12.0934   0.0005  -0.961193  -0.268266  0.37433     0.19420     0.72151
celltype         2   0.246831  0.159346      2.3995   0.1214  -0.065481   0.559143  1.58450     0.94034     2.66993
celltype         3   0.581337  0.185199      9.8532   0.0017   0.218353   0.944321  2.21394     1.22280     4.00845
)");
}

TEST(WriteText, ShowsNoHeadingOverAColumnWithoutTitleAndNoValueInAHeadingRow) {
  EXPECT_EQ(Written(VeteranSummary()), R"(Goodness of fit
===============
Total number of cases: 137 Complete: 128 Censored: 9
Estimation procedure converged.

-2 Log L                    948.794
AIC                         964.794
SBC                         987.610
R2                            0.384
Global test: All betas = 0
Score                        66.737
Likelihood Ratio             62.104
Wald                         62.367
)");
}

TEST(WriteText, UnderlinesTheFirstLineOfATitleOnly) {
  EXPECT_EQ(Written(Sheet({"Parameter Estimates\n * denotes fixed"}, {"* age"}, {NumberColumn("Score", {1.5})})),
            R"(Parameter Estimates
===================
 * denotes fixed

         Score
--------------
* age  1.50000
)");
}

TEST(WriteText, NamesTheCornerCellAndPutsNumberedNamesToTheRight) {
  EXPECT_EQ(Written(Sheet({}, {"1", "2", "10"},
                          {TextColumn("Effect Entered", {"karno", "", "age"}), NumberColumn("df", {1, 1, 3})}, "Step")),
            R"(      Effect
Step  Entered  df
-----------------
   1  karno     1
   2            1
  10  age       3
)");
}

TEST(WriteText, RepeatsTheFirstColumnWhenRowsHaveNoNames) {
  EXPECT_EQ(Written(Sheet({}, {"", ""},
                          {NumberColumn("Step", {1, 2}), NumberColumn("a_coefficient_name", {0.5, 0.25}),
                           NumberColumn("another_name_of_this_length", {0.5, 0.25})},
                          "Step"),
                    40),
            R"(Step  a_coefficient_name
------------------------
   1            0.500000
   2            0.250000

Step  another_name_of_this_length
---------------------------------
   1                     0.500000
   2                     0.250000
)");
}

TEST(WriteText, PutsCountsInTextFormToTheRightAndOtherTextsToTheLeft) {
  EXPECT_EQ(Written(Sheet({}, {"", ""},
                          {TextColumn("Stratum", {"adeno", "large cell"}), TextColumn("Total", {"27", "5"}),
                           TextColumn("Version", {"1.2.3", "-"})})),
            R"(Stratum     Total  Version
--------------------------
adeno          27  1.2.3
large cell      5  -
)");
}

TEST(WriteText, CountsCharactersNotBytes) {
  EXPECT_EQ(Written(Sheet({"\xC3\x9C"
                           "berleben"},
                          {"\xC3\xA4ge", "\xE5\xB9\xB4", "sex"}, {NumberColumn("\xCE\xB2", {1, 22, 333})})),
            "\xC3\x9C"
            "berleben\n"
            "=========\n"
            "\n"
            "       \xCE\xB2\n"
            "--------\n"
            "\xC3\xA4ge    1\n"
            "\xE5\xB9\xB4    22\n"
            "sex  333\n");
}

TEST(WriteText, SetsTitlesAndHighlightedCellsInBold) {
  const ResultDocument document =
      Sheet({"Type 3 Tests\nsecond line"}, {"karno", "age"},
            {TextColumn("Level", {"a", "b"}), NumberColumn("Wald", {35.5, 1.5}, {true, true}),
             NumberColumn("P value", {0.01, NoNumber}, {true, false})});
  EXPECT_EQ(Written(document, 80, true),
            "\x1b[1mType 3 Tests\x1b[0m\n"
            "============\n"
            "second line\n"
            "\n"
            "       Level     Wald  P value\n"
            "------------------------------\n"
            "\x1b[1mkarno\x1b[0m  \x1b[1ma\x1b[0m      \x1b[1m35.5000\x1b[0m   \x1b[1m0.0100\x1b[0m\n"
            "age    b       \x1b[1m1.5000\x1b[0m\n");
  EXPECT_EQ(Written(document, 80, false).find('\x1b'), std::string::npos);
}

TEST(WriteText, PassesNoControlSequenceFromNames) {
  ResultDocument document = Sheet({"\x1b[2Jtitle"}, {"\x1b[31mname\xFF"},
                                  {TextColumn("\x1b]0;column\x07", {"\x1b[0mcell"}), NumberColumn("x", {1})},
                                  "\x1b"
                                  "corner");
  EXPECT_EQ(Written(document).find('\x1b'), std::string::npos);
  EXPECT_EQ(Written(document).find('\xFF'), std::string::npos);
  document.Content = TextContent{"\x1b[31mred\n"};
  EXPECT_EQ(Written(document).find('\x1b'), std::string::npos);
}

TEST(WriteText, KeepsEveryLineWithinTheWidth) {
  std::vector<SheetColumn> columns;
  std::vector<std::string> names;
  for (int i = 0; i < 30; ++i) {
    names.push_back("coefficient_" + std::to_string(i));
    columns.push_back(NumberColumn(names.back(), std::vector<double>(30, 0.125 * i - 1.7)));
  }
  const ResultDocument document = Sheet({"Covariance matrix of parameters"}, names, columns);
  for (const int width : {80, 100, 200}) {
    const std::string text = Written(document, width);
    int longest = 0;
    for (const std::string& line : PrintableLines(text)) longest = std::max(longest, DisplayWidth(line));
    EXPECT_LE(longest, width);
    EXPECT_GT(longest, width - 18) << "the lines are used";
    for (const std::string& name : names) EXPECT_NE(text.find(" " + name), std::string::npos) << name;
  }
}

TEST(WriteText, KeepsTheLevelBesideLongNamesInEveryBlock) {
  const ResultDocument document =
      Sheet({}, {"treatment_group*baseline_tumour_size", "celltype"},
            {TextColumn("Level of Effect", {"1", "2"}), NumberColumn("Parameter Estimate", {0.5, 0.25}),
             NumberColumn("Standard Error", {0.5, 0.25}), NumberColumn("Chi-square", {1.5, 2.5})});
  EXPECT_EQ(Written(document, 70), R"(                                      Level of  Parameter  Standard
                                        Effect   Estimate     Error
-------------------------------------------------------------------
treatment_group*baseline_tumour_size         1   0.500000  0.500000
celltype                                     2   0.250000  0.250000

                                      Level of
                                        Effect  Chi-square
----------------------------------------------------------
treatment_group*baseline_tumour_size         1     1.50000
celltype                                     2     2.50000
)");
}

TEST(WriteText, LeavesABlankLineBetweenDocuments) {
  ResultDocuments documents;
  documents.Add(Sheet({"First"}, {"a"}, {NumberColumn("", {1})}));
  ResultDocument& text = documents.Add(ResultDocument{});
  text.Titles = {"Cox Proportional Hazards C Code"};
  text.Content = TextContent{"int main() {\n\treturn 0;\n}"};
  EXPECT_EQ(WriteText(RunReport{}, documents, WriteOptions{}), R"(First
=====

a  1

Cox Proportional Hazards C Code
===============================

int main() {
)"
                                                               "\treturn 0;\n"
                                                               "}\n");
}

TEST(WriteText, TellsTheRangesOfAChart) {
  ResultDocument document;
  document.Titles = {"Survivor function"};
  document.Content = ChartContent{
      "Time", "Survival", {{"Pattern 1", "value", {0, 5, 999}, {1, 0.5, NoNumber}}, {"none", "value", {}, {}}}};
  EXPECT_EQ(Written(document), R"(Survivor function
=================

                   Time           Survival  Survival
Series     Points  from  Time to      from        to
----------------------------------------------------
Pattern 1       3     0      999  0.500000         1
none            0
)");
}

TEST(WriteText, WritesNothingForNothingAndTitlesForAnEmptySheet) {
  EXPECT_EQ(WriteText(RunReport{}, ResultDocuments{}, WriteOptions{}), "");
  EXPECT_EQ(Written(Sheet({"Empty"}, {}, {})), "Empty\n=====\n\n");
}

}  // namespace
}  // namespace orv
