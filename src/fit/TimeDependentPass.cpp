#include "fit/TimeDependentPass.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "data/AlmostEqual.h"
#include "fit/PassKernels.h"

namespace orv {

namespace {

constexpr std::size_t kMostKept = std::size_t{1} << 24;  // doubles: 128 MiB

std::vector<std::size_t> VaryingColumns(const std::vector<TimeColumn>& design) {
  std::vector<std::size_t> varying;
  for (std::size_t j = 0; j < design.size(); ++j) {
    if (!design[j].Expressions.empty()) varying.push_back(j);
  }
  return varying;
}

// Rows that one pass evaluates: the risk set of each group with events, the row that it is centred on, and each event
// at its own time.
std::size_t EvaluatedRows(const CaseTable& cases, int n, const CaseColumns& columns, const TieTable& ties) {
  std::size_t rows = 0;
  for (int row = 1; row <= n; ++row) {
    if (cases.GetRow(row)[columns.Status] == 1.0) ++rows;
    if (ties.Deaths(row) > 0.0) rows += static_cast<std::size_t>(n - row + 2);
  }
  return rows;
}

std::size_t KeptCount(const CaseTable& cases,
                      int n,
                      const CaseColumns& columns,
                      const TieTable& ties,
                      std::size_t varying) {
  if (ties.Failed() || varying == 0) return 0;
  const std::size_t count = EvaluatedRows(cases, n, columns, ties) * varying;
  return count <= kMostKept ? count : 0;
}

}  // namespace

TimeDependentPass::TimeDependentPass(Host& host,
                                     const CaseTable& cases,
                                     int n,
                                     const CaseColumns& columns,
                                     const std::vector<TimeColumn>& design,
                                     ExpressionValue value,
                                     int efronStep)
    : m_cases(cases),
      m_n(n),
      m_columns(columns),
      m_design(design),
      m_value(std::move(value)),
      m_ties(host, cases, n, columns),
      m_sums(host, static_cast<int>(design.size()), efronStep),
      m_x(host, design.size()),
      m_center(host, design.size()),
      m_events(host, static_cast<std::size_t>(n)),
      m_varying(VaryingColumns(design)),
      m_current(host, m_varying.size()),
      m_kept(host, KeptCount(cases, n, columns, m_ties, m_varying.size())) {}

// Values that cannot be kept for lack of memory are computed anew in each pass.
bool TimeDependentPass::Failed() const {
  return m_ties.Failed() || m_sums.Failed() || m_x.Failed() || m_center.Failed() || m_events.Failed() ||
         m_current.Failed();
}

const double* TimeDependentPass::VaryingValues(const double* cells, double time) {
  const bool hasStore = !m_kept.Failed() && m_kept.Count() > 0;
  double* values = hasStore ? m_kept.Data() + m_next : m_current.Data();
  m_next += hasStore ? m_varying.size() : 0;
  if (m_isKept) return values;
  for (std::size_t k = 0; k < m_varying.size(); ++k) {
    const TimeColumn& column = m_design[m_varying[k]];
    values[k] = cells[column.Column];
    for (const int expression : column.Expressions) values[k] *= m_value(expression, time, cells);
  }
  return values;
}

void TimeDependentPass::FormDesign(const double* cells, double time) {
  for (std::size_t j = 0; j < m_design.size(); ++j) m_x[j] = cells[m_design[j].Column];
  const double* values = VaryingValues(cells, time);
  for (std::size_t k = 0; k < m_varying.size(); ++k) m_x[m_varying[k]] = values[k];
}

void TimeDependentPass::SumRiskSet(int row, double time, const double* beta) {
  const int p = static_cast<int>(m_design.size());
  FormDesign(m_cases.GetRow(row), time);
  std::copy_n(m_x.Data(), p, m_center.Data());
  m_sums.ClearRiskSet();
  m_sums.ClearEvents();
  for (int k = m_n; k >= row; --k) {
    const double* member = m_cases.GetRow(k);
    const double weight = member[m_columns.Weight];
    FormDesign(member, time);
    const double wr =
        beta == nullptr ? weight : weight * std::exp(KernelsOfThisMachine().LinearPredictor(m_x.Data(), beta, p));
    Center();
    m_sums.Join(m_x.Data(), wr);
    if (member[m_columns.Status] == 1.0 && AlmostEqual(member[m_columns.Time], time)) m_sums.AddEvent();
  }
}

void TimeDependentPass::AddEvent(int row, const double* beta, CompensatedSum& L, double* U) {
  const int p = static_cast<int>(m_design.size());
  const double* cells = m_cases.GetRow(row);
  const double weight = cells[m_columns.Weight];
  FormDesign(cells, cells[m_columns.Time]);
  if (beta != nullptr) L.Add(KernelsOfThisMachine().LinearPredictor(m_x.Data(), beta, p) * weight);
  Center();
  for (int j = 0; j < p; ++j) U[j] += m_x[static_cast<std::size_t>(j)] * weight;
}

void TimeDependentPass::Center() {
  for (std::size_t j = 0; j < m_design.size(); ++j) m_x[j] -= m_center[j];
}

double TimeDependentPass::Evaluate(const double* beta, double* U, double** H) {
  const int p = static_cast<int>(m_design.size());
  m_sums.StartPass();
  m_next = 0;
  ClearDerivatives(U, H, p);
  CompensatedSum L;
  std::size_t events = 0;  // of the open group
  for (int row = m_n; row >= 1; --row) {
    const double* cells = m_cases.GetRow(row);
    if (cells[m_columns.Status] == 1.0) m_events[events++] = row;
    if (!(m_ties.Deaths(row) > 0.0)) continue;
    SumRiskSet(row, cells[m_columns.Time], beta);
    for (std::size_t k = 0; k < events; ++k) AddEvent(m_events[k], beta, L, U);
    events = 0;
    m_sums.CloseGroup(m_ties.Deaths(row), m_ties.MeanWeight(row), beta == nullptr);
  }
  m_isKept = !m_kept.Failed() && m_kept.Count() > 0;
  m_sums.EndPass(L, U, H);
  return L.Value();
}

}  // namespace orv
