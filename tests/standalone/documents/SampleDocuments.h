// Documents for the tests of the writers, built column by column.
#pragma once

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "standalone/documents/ResultDocument.h"

namespace orv {

inline constexpr double NoNumber = std::numeric_limits<double>::quiet_NaN();

inline SheetColumn NumberColumn(std::string title, std::vector<double> numbers, std::vector<bool> highlighted = {}) {
  SheetColumn column;
  column.Name = std::move(title);
  column.Highlighted = highlighted.empty() ? std::vector<bool>(numbers.size(), false) : std::move(highlighted);
  column.Numbers = std::move(numbers);
  return column;
}

inline SheetColumn TextColumn(std::string title, std::vector<std::string> texts) {
  SheetColumn column;
  column.Name = std::move(title);
  column.IsText = true;
  column.Numbers.assign(texts.size(), NoNumber);
  column.Highlighted.assign(texts.size(), false);
  column.Texts = std::move(texts);
  return column;
}

inline ResultDocument Sheet(std::vector<std::string> titles,
                            std::vector<std::string> rowNames,
                            std::vector<SheetColumn> columns,
                            std::string shortName = "") {
  ResultDocument document;
  document.Titles = std::move(titles);
  document.Content = SheetContent{std::move(shortName), std::move(rowNames), std::move(columns)};
  return document;
}

// The parameter table of a model for the Veterans' Administration lung cancer trial: four covariates, then treatment
// and cell type in sigma coding, Efron's ties.
inline ResultDocument VeteranEstimates() {
  const std::vector<bool> significant = {true, false, false, false, false, true, false, true};
  const auto column = [&](std::string title, std::vector<double> numbers) {
    return NumberColumn(std::move(title), std::move(numbers), significant);
  };
  return Sheet(
      {"Parameter Estimates"}, {"karno", "diagtime", "age", "prior", "trt", "celltype", "celltype", "celltype"},
      {TextColumn("Level of Effect", {"", "", "", "", "1", "1", "2", "3"}),
       column("Parameter Estimate",
              {-0.0328153261941662, 8.13205087074849e-05, -0.00870647494549884, 0.00715936019179386, -0.147301410749021,
               -0.614729622815033, 0.246830839938358, 0.581336751364288}),
       column("Standard Error", {0.00550775688643625, 0.00913606224866357, 0.00930029912031249, 0.02323053840684,
                                 0.103774801801591, 0.176770373975586, 0.159345803676112, 0.185199420616839}),
       column("Chi-square", {35.4980034230096, 7.92286167243423e-05, 0.876376807203661, 0.0949794989795107,
                             2.01479093065244, 12.0934251704051, 2.39948246349874, 9.85317761109648}),
       column("P value", {2.55312133628965e-09, 0.992898086742923, 0.349195966725927, 0.757939708089482,
                          0.15577272597975, 0.000505999350167831, 0.121375399074419, 0.00169538661711382}),
       column("95% Lower CL", {-0.0436103313271837, -0.0178250324591891, -0.0269347262667609, -0.038371658427087,
                               -0.350696284782921, -0.961193189340857, -0.0654811963544117, 0.218352556997599}),
       column("95% Upper CL", {-0.0220203210611487, 0.0179876734766041, 0.00952177637576318, 0.0526903788106747,
                               0.0560934632848799, -0.268266056289209, 0.559142876231127, 0.944320945730977}),
       column("Hazard Ratio", {0.967717255116806, 1.00008132381531, 0.991331316650765, 1.00718504968115,
                               0.744827358139468, 0.374325924309379, 1.58449985466512, 2.21394218339685}),
       column("95% Hazard Ratio Lower CL", {0.957326925113785, 0.982332893693452, 0.973424778519987, 0.962355206995378,
                                            0.495894255488599, 0.194204976325529, 0.940339670043819, 1.22280243930256}),
       column("95% Hazard Ratio Upper CL", {0.978220356373554, 1.0181504260574, 1.00956725271234, 1.05410322189496,
                                            1.11872195995982, 0.721505186227565, 2.66992861134615, 4.00844799935112})});
}

// The summary of the same model: one column of unlike quantities, without a title.
inline ResultDocument VeteranSummary() {
  return Sheet(
      {"Goodness of fit", "Total number of cases: 137 Complete: 128 Censored: 9", "Estimation procedure converged."},
      {"-2 Log L", "AIC", "SBC", "R2 ", "Global test: All betas = 0", "Score", "Likelihood Ratio", "Wald"},
      {NumberColumn("", {948.794223429446, 964.794223429446, 987.610465540803, 0.384417689341001, NoNumber,
                         66.737471142116, 62.1038864066699, 62.3672685806785})},
      "Total number");
}

}  // namespace orv
