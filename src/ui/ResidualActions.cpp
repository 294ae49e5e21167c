// Residuals and Save in the results dialog.
#include "data/AlmostEqual.h"
#include "data/CCoxData.h"
#include "data/RoundHalfAway.h"
#include "data/VariableNames.h"
#include "host/FormatText.h"
#include "inference/InfluenceMeasures.h"
#include "inference/SchoenfeldResiduals.h"
#include "inference/ScoreResiduals.h"
#include "output/CoefficientLabels.h"
#include "output/ResidualTable.h"
#include "ui/CCoxPHResults.h"

namespace orv {

namespace {

constexpr const char* kNoResidualSelected = "Please select at least one residual.";

bool IsAnyChosen(const ResidualChoices& c) {
  return c.ComputeMartingale || c.ComputeDeviance || c.ComputeScore || c.ComputeSchoenfeld ||
         c.ComputeScaledSchoenfeld || c.ComputeDfbeta || c.ComputeXbeta || c.ComputeStdXBeta ||
         c.ComputeLikelihoodDisplacement || c.ComputeLMAX;
}

// Residuals live as long as the table that shows them.
class RequestedResiduals {
 public:
  RequestedResiduals(CCoxFit& fit, ResidualChoices& choices) : m_fit(fit), m_choices(choices) {}
  ~RequestedResiduals() { m_fit.DropResiduals(); }
  RequestedResiduals(const RequestedResiduals&) = delete;
  RequestedResiduals& operator=(const RequestedResiduals&) = delete;

  void Compute() {
    if (m_choices.ComputeScore) ComputeScoreResiduals(m_fit);
    if (m_choices.ComputeSchoenfeld) ComputeSchoenfeldResiduals(m_fit);
    if (m_choices.ComputeScaledSchoenfeld) ComputeScaledSchoenfeldResiduals(m_fit);
    if (m_choices.ComputeDfbeta) m_fit.ComputeDfBeta();
    if (m_choices.ComputeStdXBeta) ComputeStdErrorXBeta(m_fit);
    if (m_choices.ComputeLikelihoodDisplacement) ComputeLikelihoodDisplacement(m_fit);
    // A direction that cannot be computed is left out without a word.
    if (m_choices.ComputeLMAX && !ComputeLmax(m_fit)) m_choices.ComputeLMAX = false;
  }

  std::vector<ResidualColumn> Columns() const {
    std::vector<ResidualColumn> columns;
    const auto addOne = [&](bool chosen, const char* header, const std::vector<double>& values) {
      if (chosen) columns.push_back({header, &values, false});
    };
    std::vector<std::string> labels = CoefficientLabels(*m_fit.m_pData);
    for (std::string& label : labels) label = m_fit.Owner().GetHost().StripFormatting(label);
    const auto addMatrix = [&](bool chosen, const std::string& base, const DenseMatrix& matrix, bool eventsOnly) {
      for (std::size_t c = 0; chosen && c < labels.size(); ++c) {
        columns.push_back({base + "_" + labels[c], c < matrix.size() ? &matrix[c] : nullptr, eventsOnly});
      }
    };
    addOne(m_choices.ComputeMartingale, "Martingale", m_fit.m_MartingaleResiduals);
    addOne(m_choices.ComputeDeviance, "Deviance", m_fit.m_DevianceResiduals);
    addMatrix(m_choices.ComputeScore, "Score residual", m_fit.m_ScoreResiduals, false);
    addMatrix(m_choices.ComputeSchoenfeld, "Schoenfeld", m_fit.m_SchoenfeldResiduals, true);
    addMatrix(m_choices.ComputeScaledSchoenfeld, "Scaled Schoenfeld", m_fit.m_ScaledSchoenfeldResiduals, true);
    addMatrix(m_choices.ComputeDfbeta, "DFBeta", m_fit.m_DfBeta, false);
    addOne(m_choices.ComputeStdXBeta, "Std. Error Xbeta", m_fit.m_StdErrorXBeta);
    addOne(m_choices.ComputeXbeta, "XBeta", m_fit.m_LinearPredictor);
    addOne(m_choices.ComputeLikelihoodDisplacement, "Likelihood displacement", m_fit.m_LikelihoodDisplacement);
    addOne(m_choices.ComputeLMAX, "Lmax", m_fit.m_Lmax);
    return columns;
  }

 private:
  CCoxFit& m_fit;
  ResidualChoices& m_choices;
};

// The values of input variables behind the residuals, each under its name. Where a variable has labels its column is of
// texts, and a value without one is written as the number that it is.
class InputVariables {
 public:
  InputVariables(CCoxPHResults& results, const std::vector<int>& variables, const std::vector<int>& order)
      : m_host(results.Analysis().GetHost()), m_data(results.Data()), m_variables(variables), m_order(order) {
    m_case.resize(static_cast<std::size_t>(m_host.GetNbVars()) + 1);
  }

  void AppendTo(CResultSpreadsheet& sheet, int firstColumn) {
    for (std::size_t k = 0; k < m_variables.size(); ++k) {
      Append(m_variables[k], firstColumn + static_cast<int>(k), sheet);
    }
  }

 private:
  double ValueOf(int variable, std::size_t place) {
    const int caseNumber = RoundToInteger(m_data.CaseTable.GetRow(m_order[place])[m_data.CaseNumberColumn]);
    int hasWeight = 0;
    int weightVariable = 0;
    double weight = 0.0;
    m_host.cstrtw(caseNumber, m_case.data(), hasWeight, weight, weightVariable);
    return m_case[static_cast<std::size_t>(variable)];
  }

  void Append(int variable, int column, CResultSpreadsheet& sheet) {
    sheet.SetColumnName(column, VariableName(m_host, variable));
    double missing = 0.0;
    m_host.getmd5(variable, missing);
    std::vector<double> values;
    std::vector<std::string> labels;
    bool hasLabels = false;
    for (std::size_t place = 0; place < m_order.size(); ++place) {
      values.push_back(ValueOf(variable, place));
      labels.push_back(m_host.GetInputTable().ValueLabel(variable, values.back()));
      hasLabels = hasLabels || !labels.back().empty();
    }
    for (std::size_t place = 0; place < m_order.size(); ++place) {
      if (AlmostEqual(values[place], missing)) continue;
      const int row = static_cast<int>(place);
      if (!hasLabels) {
        sheet.SetNumber(row, column, values[place]);
      } else {
        sheet.SetText(row, column, labels[place].empty() ? FormatGeneral(values[place]) : labels[place]);
      }
    }
  }

  Host& m_host;
  const CCoxData& m_data;
  const std::vector<int>& m_variables;
  const std::vector<int>& m_order;
  std::vector<double> m_case;
};

}  // namespace

int CCoxPHResults::CreateResidualTable(std::vector<int>* order) {
  Residuals = AvailableResiduals(Residuals);
  if (!IsAnyChosen(Residuals)) {
    Analysis().dsplst(0, kNoResidualSelected);
    return 1;
  }
  RequestedResiduals requested(Fit(), Residuals);
  requested.Compute();
  const std::vector<ResidualColumn> columns = requested.Columns();
  if (columns.empty()) return 1;
  const std::vector<int> rows = RowsByCaseNumber(Fit());
  if (order != nullptr) *order = rows;
  ResidualSheet(Fit(), columns, rows, 0).Show();
  return 0;
}

int CCoxPHResults::SaveResidualsAndPredictedValues(const std::vector<int>& variables) {
  Residuals = AvailableResiduals(Residuals);
  if (!IsAnyChosen(Residuals)) {
    Analysis().dsplst(0, kNoResidualSelected);
    return 1;
  }
  RequestedResiduals requested(Fit(), Residuals);
  const bool needsScores = Residuals.ComputeDfbeta || Residuals.ComputeLikelihoodDisplacement || Residuals.ComputeLMAX;
  const bool areAbsent = Fit().m_ScoreResiduals.empty() && !Fit().m_BetaHistory.empty();
  if (needsScores && areAbsent && !Residuals.ComputeScore) {
    // Kept: a save takes the kernel for survival times here, whatever the input form; columns saved on record hold it.
    Fit().m_ScoreResiduals = SurvivalScoreResiduals(Fit(), Fit().m_BetaHistory.back().data());
  }
  requested.Compute();
  const std::vector<ResidualColumn> columns = requested.Columns();
  if (columns.empty()) return 1;
  const std::vector<int> rows = RowsByCaseNumber(Fit());
  CResultSpreadsheet sheet = ResidualSheet(Fit(), columns, rows, static_cast<int>(variables.size()));
  InputVariables(*this, variables, rows).AppendTo(sheet, static_cast<int>(columns.size()));
  sheet.Show();
  return 0;
}

}  // namespace orv
