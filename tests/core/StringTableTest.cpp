#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <string>

#include "core/StringTable.h"
#include "host/TextIds.h"

namespace orv {
namespace {

// The texts to the letter: manuals quote them and macros match them.
const std::map<int, std::string> kTexts = {
    {10000, "Cox Proportional Hazards Regression."},
    {10009, "Please select a censor variable."},
    {10010, "Too many variables have been selected."},
    {10014, "Please select a start variable."},
    {10015, "Please select a stop variable."},
    {10024, "Maximum number of iterations must be between 1 and 1000."},
    {10025, "Please review the time-dependent covariate expressions for correctness."},
    {10026,
     "Invalid number of variables selected.\nTo specify survival times select:\n(a.) 1 variable with survival "
     "times,\n(b.) 2 variables with dates, or\n(c.) 6 variables representing dates."},
    {10027, "The code used to identify complete cases is not valid."},
    {10028, "The code used to identify censored cases is not valid."},
    {10037, "Please define a time-dependent covariate or specify another input type."},
    {10039, "Please specify a censoring indicator variable."},
    {10040, "Please specify a start variable."},
    {10041, "Please specify a stop variable."},
    {10042, "Please specify a variable that contains the survival times."},
    {10043, "Please specify one or more effects in the design."},
    {10051, "Fewer than 1 complete case in the dataset; cannot reliably estimate parameters."},
    {10052, "Codes for censored and complete observations are identical.  Please select two different codes."},
    {10053, "There are no valid cases.  Please review the data for appropriate values."},
    {10102, "Not enough memory to perform requested operations."},
    {10111, "Please select another variable. This variable is already selected as a time variable."},
    {10112, "Please select another variable. This variable is already selected as a strata variable."},
    {10113, "Please select another variable. This variable is already selected as a factor."},
    {10114, "Please select another variable.  This variable is already selected as a covariate."},
    {10119, "Please specify the P to remove value between 0 and 1."},
    {10120, " Please specify the P to enter value between 0 and 1."},
    {10121,
     "Please specify the number of effects to force in the model between 0 and %d (=Number of effects in design)."},
    {10125, "No variables were selected in the model building procedure.  No results will be displayed."},
    {10132, "Reading data"},
    {10133, "No user-specified parameter values have been provided."},
    {10187, "The design is invalid.  Please review effects in design."},
    {10188,
     "Weights cannot be used with the discrete likelihood.  Please turn off weights or select a different likelihood."},
    {10190, "Number of iterations should be greater than 0."},
    {10192, "Not enough complete cases in strata: "},
    {10196,
     "A numerical issue was encountered during estimation and the Cox Proportional Hazards algorithm was unable to "
     "converge.  No results are available.  New start values should be considered."},
    {10197, "File is not a valid Orvanta Spreadsheet."},
    {10198, "Invalid start values were found.  Please review spreadsheet for appropriate values."},
    {10199,
     "Too many columns. Start values should be placed in the appropriate rows within 1 column: the number of "
     "rows/cases "
     "= the number of coefficients."},
    {10201,
     "Only 1 strata code was found.  In order to perform a stratified analysis the strata variable must contain more "
     "than 1 code."},
    {10213,
     "A numerical error occurred during model building.  Model building has stopped.  The analysis will now maximize "
     "the likelihood of the model containing the effects selected prior to the numerical issue."},
    {10214,
     "Fewer than 2 valid codes were found for a grouping factor.  Please carefully check the codes and selection "
     "conditions."},
    {10224, "Please review the fixed parameters for appropriate values."},
    {10225, "Number of start values specified does not equal number of coefficients in full model."},
    {10226,
     "Please review variable selection.  Start values were specified, but no predictor variables (covariates or "
     "factors) were selected."},
    {10227,
     "Please review variable selection.  Design was specified, but no predictor variables were (covariates or factors) "
     "were selected."},
    {10228, "Nested effects are not allowed when sigma-restricted or reference parameterization is used."},
    {10244,
     "The design contains time-dependent covariates but the input type specified does not allow for time-dependent "
     "covariates.  Review design for appropriate effects."},
};

TEST(StringTable, HoldsItsTextsToTheLetter) {
  for (const auto& [id, text] : kTexts) EXPECT_EQ(LoadModuleText(id), text) << id;
}

TEST(StringTable, AnUnknownIdHasAnEmptyText) {
  for (const int id : {0, -1, 9999, 10001, 10013, 10038, 99999}) EXPECT_STREQ(LoadModuleText(id), "") << id;
}

TEST(StringTable, EveryNamedIdHasAText) {
  std::ifstream header(std::string(ORV_SOURCE_DIR) + "/src/host/TextIds.h");
  ASSERT_TRUE(header);
  const std::regex constant(R"(inline constexpr int (\w+) = (\d+);)");
  int named = 0;
  for (std::string line; std::getline(header, line);) {
    std::smatch parts;
    if (!std::regex_search(line, parts, constant)) continue;
    ++named;
    EXPECT_STRNE(LoadModuleText(std::stoi(parts[2])), "") << parts[1];
  }
  EXPECT_GE(named, static_cast<int>(kTexts.size()));
}

TEST(StringTable, AShownTextLeadsBackToItsId) {
  for (const auto& [id, text] : kTexts) EXPECT_EQ(FindModuleTextId(text), id) << text;
  EXPECT_EQ(FindModuleTextId("Not enough complete cases in strata: south"), 10192);
  EXPECT_EQ(FindModuleTextId("Please specify the number of effects to force in the model between 0 and 3 (=Number of "
                             "effects in design)."),
            10121);
  EXPECT_EQ(FindModuleTextId(""), 0);
  EXPECT_EQ(FindModuleTextId("Please"), 0);
  EXPECT_EQ(FindModuleTextId("something else"), 0);
}

TEST(TextIds, NameTheTextsThatTheySay) {
  EXPECT_EQ(TextIds::NoCensorVariable, 10039);
  EXPECT_EQ(TextIds::NoCensorVariableChosen, 10009);
  EXPECT_EQ(TextIds::NoStartVariable, 10040);
  EXPECT_EQ(TextIds::NoStopVariable, 10041);
  EXPECT_EQ(TextIds::PToEnterOutOfRange, 10120);
  EXPECT_EQ(TextIds::PToRemoveOutOfRange, 10119);
  EXPECT_EQ(TextIds::CompleteCodeInvalid, 10027);
  EXPECT_EQ(TextIds::CensoredCodeInvalid, 10028);
}

}  // namespace
}  // namespace orv
