// Small selections whose outcome can be told in advance, and what a test reads from them.
#pragma once

#include <string>
#include <vector>

#include "output/SelectionTables.h"
#include "select/RandomSelections.h"
#include "support/SheetReading.h"

namespace orv::testing {

inline constexpr const char* kModelBuildingStopped =
    "A numerical error occurred during model building.  Model building has stopped.  The analysis will now maximize "
    "the "
    "likelihood of the model containing the effects selected prior to the numerical issue.";
inline constexpr const char* kNothingSelected =
    "No variables were selected in the model building procedure.  No results will be displayed.";
inline constexpr const char* kAllForced = "All effects were forced into the model.";

using Names = std::vector<std::string>;

// One of the three procedures on SelectionColumns with some of their effects.
class NamedSelection {
 public:
  NamedSelection(int modelBuilding, const Names& effects, const SelectionForm& form = {}, unsigned seed = 5)
      : m_building(modelBuilding) {
    m_problem.Columns = SelectionColumns(seed, 80);
    m_problem.Define = [form](TestAnalysis& analysis) { DefineSelectionForm(form, analysis); };
    m_problem.Effects = SelectionEffects(effects);
  }
  NamedSelection& Limits(double toEnter, double toRemove) {
    m_problem.PToEnter = toEnter;
    m_problem.PToRemove = toRemove;
    return *this;
  }
  NamedSelection& Force(int effects) {
    m_problem.Forced = effects;
    return *this;
  }
  NamedSelection& Hold(const std::vector<bool>& fixed, const std::vector<std::vector<double>>& startValues) {
    m_problem.Fixed = fixed;
    m_problem.StartValues = startValues;
    return *this;
  }

  const SelectionProblem& Problem() const { return m_problem; }
  void Prepare(TestAnalysis& analysis) const { DefineSelection(m_problem, m_building, analysis); }

 private:
  int m_building;
  SelectionProblem m_problem;
};

// A selection that has been prepared, to run and to look at.
class PreparedSelection {
 public:
  explicit PreparedSelection(const NamedSelection& selection) : Analysis(selection.Problem().Columns) {
    selection.Prepare(Analysis);
  }
  int Run() { return Analysis.Run(); }
  Names Effects() { return Analysis.Settings().DesignEffects; }
  // The table of steps.
  SheetView Summary() {
    ShowModelBuildingSummary(Analysis.Fit());
    return LastSheet(Analysis.Host);
  }

  TestAnalysis Analysis;
};

}  // namespace orv::testing
