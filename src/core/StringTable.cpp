#include "core/StringTable.h"

#include <algorithm>
#include <array>

namespace orv {

namespace {

struct TableText {
  int Id;
  const char* Text;
};

// Ascending by id. The texts are quoted in manuals and matched by macros: blanks and line feeds are part of them.
constexpr std::array kTexts = {
    TableText{10000, "Cox Proportional Hazards Regression."},
    TableText{10009, "Please select a censor variable."},
    TableText{10010, "Too many variables have been selected."},
    TableText{10014, "Please select a start variable."},
    TableText{10015, "Please select a stop variable."},
    TableText{10023, "Error in expression (empty?)."},
    TableText{10024, "Maximum number of iterations must be between 1 and 1000."},
    TableText{10025, "Please review the time-dependent covariate expressions for correctness."},
    TableText{10026,
              "Invalid number of variables selected.\nTo specify survival times select:\n(a.) 1 variable with survival "
              "times,\n(b.) 2 variables with dates, or\n(c.) 6 variables representing dates."},
    TableText{10027, "The code used to identify complete cases is not valid."},
    TableText{10028, "The code used to identify censored cases is not valid."},
    TableText{10034, "The formula/expression is not valid.  \nThe specified time covariate is not a function of time."},
    TableText{10037, "Please define a time-dependent covariate or specify another input type."},
    TableText{10039, "Please specify a censoring indicator variable."},
    TableText{10040, "Please specify a start variable."},
    TableText{10041, "Please specify a stop variable."},
    TableText{10042, "Please specify a variable that contains the survival times."},
    TableText{10043, "Please specify one or more effects in the design."},
    TableText{10051, "Fewer than 1 complete case in the dataset; cannot reliably estimate parameters."},
    TableText{10052, "Codes for censored and complete observations are identical.  Please select two different codes."},
    TableText{10053, "There are no valid cases.  Please review the data for appropriate values."},
    TableText{10102, "Not enough memory to perform requested operations."},
    TableText{10111, "Please select another variable. This variable is already selected as a time variable."},
    TableText{10112, "Please select another variable. This variable is already selected as a strata variable."},
    TableText{10113, "Please select another variable. This variable is already selected as a factor."},
    TableText{10114, "Please select another variable.  This variable is already selected as a covariate."},
    TableText{10119, "Please specify the P to remove value between 0 and 1."},
    TableText{10120, " Please specify the P to enter value between 0 and 1."},
    TableText{
        10121,
        "Please specify the number of effects to force in the model between 0 and %d (=Number of effects in design)."},
    TableText{10125, "No variables were selected in the model building procedure.  No results will be displayed."},
    TableText{10132, "Reading data"},
    TableText{10133, "No user-specified parameter values have been provided."},
    TableText{10136, "Maximizing likelihood"},
    TableText{10178,
              "A numerical issue was encountered during estimation and the Cox Proportional Hazards algorithm was "
              "unable to converge.  The last iteration of the parameter estimates will be used in subsequent results."},
    TableText{10187, "The design is invalid.  Please review effects in design."},
    TableText{10188,
              "Weights cannot be used with the discrete likelihood.  Please turn off weights or select a different "
              "likelihood."},
    TableText{10190, "Number of iterations should be greater than 0."},
    TableText{10191, "Please specify a name for the time covariate."},
    TableText{10192, "Not enough complete cases in strata: "},
    TableText{10196,
              "A numerical issue was encountered during estimation and the Cox Proportional Hazards algorithm was "
              "unable to converge.  No results are available.  New start values should be considered."},
    TableText{10197, "File is not a valid Orvanta Spreadsheet."},
    TableText{10198, "Invalid start values were found.  Please review spreadsheet for appropriate values."},
    TableText{10199,
              "Too many columns. Start values should be placed in the appropriate rows within 1 column: the number of "
              "rows/cases = the number of coefficients."},
    TableText{10201,
              "Only 1 strata code was found.  In order to perform a stratified analysis the strata variable must "
              "contain more than 1 code."},
    TableText{10213,
              "A numerical error occurred during model building.  Model building has stopped.  The analysis will now "
              "maximize the likelihood of the model containing the effects selected prior to the numerical issue."},
    TableText{10214,
              "Fewer than 2 valid codes were found for a grouping factor.  Please carefully check the codes and "
              "selection conditions."},
    TableText{10224, "Please review the fixed parameters for appropriate values."},
    TableText{10225, "Number of start values specified does not equal number of coefficients in full model."},
    TableText{10226,
              "Please review variable selection.  Start values were specified, but no predictor variables (covariates "
              "or factors) were selected."},
    TableText{10227,
              "Please review variable selection.  Design was specified, but no predictor variables were (covariates or "
              "factors) were selected."},
    TableText{10228, "Nested effects are not allowed when sigma-restricted or reference parameterization is used."},
    TableText{10244,
              "The design contains time-dependent covariates but the input type specified does not allow for "
              "time-dependent covariates.  Review design for appropriate effects."},
};

}  // namespace

const char* LoadModuleText(int id) {
  const auto* found = std::lower_bound(kTexts.begin(), kTexts.end(), id,
                                       [](const TableText& text, int wanted) { return text.Id < wanted; });
  return found != kTexts.end() && found->Id == id ? found->Text : "";
}

int FindModuleTextId(std::string_view shown) {
  int best = 0;
  std::size_t bestLength = 0;
  for (const TableText& text : kTexts) {
    std::string_view fixedPart = text.Text;
    fixedPart = fixedPart.substr(0, fixedPart.find('%'));
    if (fixedPart.size() > bestLength && shown.starts_with(fixedPart)) {
      best = text.Id;
      bestLength = fixedPart.size();
    }
  }
  return best;
}

}  // namespace orv
