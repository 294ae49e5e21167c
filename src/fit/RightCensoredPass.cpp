#include "fit/RightCensoredPass.h"

#include <algorithm>
#include <cmath>

#include "data/RoundHalfAway.h"
#include "fit/PassKernels.h"

namespace orv {

namespace {

bool AreLeadingColumns(const std::vector<int>& columns) {
  for (std::size_t j = 0; j < columns.size(); ++j) {
    if (columns[j] != static_cast<int>(j)) return false;
  }
  return true;
}

}  // namespace

RightCensoredPass::RightCensoredPass(Host& host,
                                     const CaseTable& cases,
                                     int n,
                                     const CaseColumns& columns,
                                     const std::vector<int>& activeColumns,
                                     int efronStep)
    : m_cases(cases),
      m_n(n),
      m_columns(columns),
      m_activeColumns(activeColumns),
      m_p(static_cast<int>(activeColumns.size())),
      m_efronStep(efronStep),
      m_isLeading(AreLeadingColumns(activeColumns)),
      m_ties(host, cases, n, columns),
      m_S1(host, activeColumns.size()),
      m_S2(host, PackedSize(activeColumns.size())),
      m_E1(host, activeColumns.size()),
      m_E2(host, PackedSize(activeColumns.size())),
      m_H(host, PackedSize(activeColumns.size())),
      m_mean(host, activeColumns.size()),
      m_x(host, activeColumns.size()) {}

bool RightCensoredPass::Failed() const {
  return m_ties.Failed() || m_S1.Failed() || m_S2.Failed() || m_E1.Failed() || m_E2.Failed() || m_H.Failed() ||
         m_mean.Failed() || m_x.Failed();
}

void RightCensoredPass::ClearRiskSet() {
  m_S0 = {};
  m_S1.Clear();
  m_S2.Clear();
}

void RightCensoredPass::ClearEvents() {
  m_E0 = 0.0;
  m_E1.Clear();
  m_E2.Clear();
}

const double* RightCensoredPass::DesignValues(const double* row) {
  if (m_isLeading) return row;
  for (int j = 0; j < m_p; ++j) m_x[static_cast<std::size_t>(j)] = row[m_activeColumns[static_cast<std::size_t>(j)]];
  return m_x.Data();
}

double RightCensoredPass::Evaluate(const double* beta, double* U, double** H) {
  const bool atZero = beta == nullptr;
  ClearRiskSet();
  ClearEvents();
  m_H.Clear();
  std::fill_n(U, m_p, 0.0);
  CompensatedSum L;
  for (int row = m_n; row >= 1; --row) {
    const double* cells = m_cases.GetRow(row);
    const double* x = DesignValues(cells);
    const double weight = cells[m_columns.Weight];
    const double status = cells[m_columns.Status];
    if (m_ties.EndsStratum(row)) {
      ClearRiskSet();
      m_E1.Clear();
      m_E2.Clear();
    }
    const double eta = atZero ? 0.0 : LinearPredictor(x, beta, m_p);
    const double r = atZero ? 1.0 : std::exp(eta);
    const double wr = weight * r;
    m_S0.Add(wr);
    m_E0 += wr * status;
    AddWeighted(m_S1.Data(), m_S2.Data(), x, wr, m_p);
    if (status == 1.0) {
      L.Add(eta * weight);
      for (int j = 0; j < m_p; ++j) U[j] += x[j] * weight;
      if (m_efronStep != 0) AddWeighted(m_E1.Data(), m_E2.Data(), x, wr, m_p);
    }
    if (m_ties.Deaths(row) > 0.0) CloseGroup(row, atZero, L, U);
  }
  const double* packed = m_H.Data();
  for (int j = 0; j < m_p; ++j) {
    for (int l = 0; l <= j; ++l) H[l][j] = *packed++;
  }
  return L.Value();
}

void RightCensoredPass::CloseGroup(int row, bool atZero, CompensatedSum& L, double* U) {
  const double d = m_ties.Deaths(row);
  EventTerm term{m_S1.Data(), m_S2.Data(), m_E1.Data(), m_E2.Data()};
  term.Weight = m_ties.MeanWeight(row);
  const double S0 = m_S0.Value();
  const double reciprocal = 1.0 / d;
  int terms = static_cast<int>(RoundHalfAway(d));
  if (m_efronStep == 0) {
    // The terms of Breslow's rule are equal. Taken at once they cost a d-th, and their rounding does not add up.
    term.Weight *= terms;
    terms = 1;
  }
  for (int k = 0; k < terms; ++k) {
    // Two forms of one number, kept apart so that the null log likelihood keeps its last digit.
    const double share = static_cast<double>(k) * m_efronStep;
    term.Fraction = atZero ? share * reciprocal : share / d;
    term.Denominator = S0 - term.Fraction * m_E0;
    L.Add(-std::log(term.Denominator) * term.Weight);
    SubtractEventTerm(term, U, m_H.Data(), m_mean.Data(), m_p);
  }
  m_E0 = 0.0;
  if (m_efronStep != 0) ClearEvents();
}

}  // namespace orv
