#include "inference/Type3Contrast.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "inference/EffectMarginality.h"

namespace orv {

namespace {

using Function = std::vector<double>;
using Positions = std::vector<std::size_t>;

constexpr double kSmallestSquare = 1e-12;    // squared length below which a function counts as dependent
constexpr double kRoundingOfAPivot = 1e-12;  // share of the column's information that rounding can leave

std::size_t Place(std::size_t i, std::size_t j) {
  return i * (i + 1) / 2 + j;
}

// A symmetric matrix, lower triangle packed by rows, and its sweeps. An index that is swept has sign -1, and entry
// (j, i) above the diagonal is s_i s_j times entry (i, j).
class Sweep {
 public:
  explicit Sweep(std::vector<double> packed, std::size_t n) : m_a(std::move(packed)), m_sign(n, 1.0) {
    for (std::size_t k = 0; k < n; ++k) m_rounding.push_back(kRoundingOfAPivot * m_a[Place(k, k)]);
  }

  double At(std::size_t i, std::size_t j) const {
    return i >= j ? m_a[Place(i, j)] : m_sign[i] * m_sign[j] * m_a[Place(j, i)];
  }

  // Sweeps an index that is not swept. Returns false when its pivot is too small, with the matrix as it was. What
  // rounding leaves of a column of large values can be above the tolerance, so it is judged by the column too.
  bool In(std::size_t k) {
    const double pivot = m_a[Place(k, k)];
    if (!(std::abs(pivot) >= kType3PivotTolerance) || !(std::abs(pivot) > m_rounding[k])) return false;
    const std::size_t n = m_sign.size();
    std::vector<double> row(n);     // of the full matrix, divided by the pivot
    std::vector<double> column(n);  // of the full matrix
    for (std::size_t i = 0; i < n; ++i) {
      row[i] = At(k, i) / pivot;
      column[i] = At(i, k);
    }
    for (std::size_t i = 0; i < n; ++i) {
      if (i == k || column[i] == 0.0) continue;
      for (std::size_t j = 0; j <= i; ++j) m_a[Place(i, j)] -= column[i] * row[j];
    }
    for (std::size_t j = 0; j < k; ++j) m_a[Place(k, j)] = row[j];
    for (std::size_t i = k + 1; i < n; ++i) m_a[Place(i, k)] = -column[i] / pivot;
    m_a[Place(k, k)] = 1.0 / pivot;
    m_sign[k] = -1.0;
    return true;
  }

  bool IsSwept(std::size_t k) const { return m_sign[k] < 0.0; }

 private:
  std::vector<double> m_a;
  std::vector<double> m_sign;
  std::vector<double> m_rounding;
};

// Which columns take which part in the hypothesis of an effect, by position in the model.
struct Parts {
  Positions Effect;
  Positions Higher;  // of the effects to which the effect is marginal
  Positions Lower;   // of those that are marginal to the effect
  Positions Others;
};

Parts PartsOf(const CCoxFit& fit, const std::vector<int>& columns, int effect) {
  const CCoxData& data = *fit.m_pData;
  Parts parts;
  std::vector<Positions*> partOfColumn(data.CoefficientCount, nullptr);
  for (int other = 0; other < static_cast<int>(data.EffectFirstColumn.size()); ++other) {
    const auto f = static_cast<std::size_t>(other);
    if (data.EffectFirstColumn[f] > data.EffectLastColumn[f]) continue;
    Positions* part = &parts.Others;
    if (other == effect) {
      part = &parts.Effect;
    } else if (EffectMarginalTo(fit, effect, other)) {
      part = &parts.Higher;
    } else if (EffectMarginalTo(fit, other, effect)) {
      part = &parts.Lower;
    }
    for (std::int32_t c = data.EffectFirstColumn[f]; c <= data.EffectLastColumn[f]; ++c) {
      partOfColumn[static_cast<std::size_t>(c - 1)] = part;
    }
  }
  for (std::size_t position = 0; position < columns.size(); ++position) {
    Positions* part = partOfColumn[static_cast<std::size_t>(columns[position])];
    if (part != nullptr) part->push_back(position);
  }
  return parts;
}

// The information of the model's columns.
std::vector<double> InformationOf(const std::vector<double>& information, const std::vector<int>& columns) {
  std::vector<double> packed;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      const auto low = static_cast<std::size_t>(std::min(columns[i], columns[j]));
      const auto high = static_cast<std::size_t>(std::max(columns[i], columns[j]));
      packed.push_back(information[Place(high, low)]);
    }
  }
  return packed;
}

// Row k of the swept matrix as a function of the parameters: 1 at k, and at each of `dependent` that is not swept the
// coefficient by which that column depends on column k.
Function FunctionOf(const Sweep& sweep, std::size_t n, std::size_t k, const Positions& dependent) {
  Function function(n, 0.0);
  function[k] = 1.0;
  for (const std::size_t j : dependent) {
    if (!sweep.IsSwept(j)) function[j] = sweep.At(k, j);
  }
  return function;
}

double Product(const Function& a, const Function& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

void SubtractMultiple(Function& from, double factor, const Function& function) {
  for (std::size_t i = 0; i < from.size(); ++i) from[i] -= factor * function[i];
}

// Gram-Schmidt: makes the functions orthogonal and of length 1. False when one depends on those before it.
bool Orthonormalise(std::vector<Function>& functions) {
  for (std::size_t i = 0; i < functions.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      SubtractMultiple(functions[i], Product(functions[i], functions[j]), functions[j]);
    }
    const double square = Product(functions[i], functions[i]);
    if (!(square >= kSmallestSquare) || !std::isfinite(square)) return false;
    const double length = std::sqrt(square);
    for (double& value : functions[i]) value /= length;
  }
  return true;
}

}  // namespace

bool BuildType3Contrast(const CCoxFit& fit,
                        const std::vector<double>& information,
                        const std::vector<int>& columns,
                        std::vector<std::vector<double>>& L,
                        int effect) {
  L.clear();
  const std::size_t p = fit.m_pData->CoefficientCount;
  if (p == 0 || information.size() != Place(p, 0)) return false;
  const std::size_t n = columns.size();
  const CCoxData& data = *fit.m_pData;
  const auto e = static_cast<std::size_t>(effect);
  if (data.EffectFirstColumn[e] > data.EffectLastColumn[e]) {
    L.assign(n, {});
    return true;
  }
  const Parts parts = PartsOf(fit, columns, effect);
  Sweep sweep(InformationOf(information, columns), n);

  // With the other effects swept, the rest of the matrix spans the estimable functions that are 0 on them. Of columns
  // that are the same in substance the first in the model stands for all, as in the fit.
  for (const std::size_t k : parts.Lower) sweep.In(k);
  Positions effectAndOthers = parts.Effect;
  effectAndOthers.insert(effectAndOthers.end(), parts.Others.begin(), parts.Others.end());
  std::sort(effectAndOthers.begin(), effectAndOthers.end());
  for (const std::size_t k : effectAndOthers) sweep.In(k);
  Positions independent;
  for (const std::size_t k : parts.Effect) {
    if (sweep.IsSwept(k)) independent.push_back(k);
  }
  Positions effectAndHigher = parts.Effect;
  effectAndHigher.insert(effectAndHigher.end(), parts.Higher.begin(), parts.Higher.end());
  std::vector<Function> functions;
  for (const std::size_t k : independent) functions.push_back(FunctionOf(sweep, n, k, effectAndHigher));

  // With the effect swept too, what is left spans those that are 0 on the effect. Each basis function has its 1 where
  // the others are 0, which keeps them well apart.
  Positions higherIndependent;
  for (const std::size_t k : parts.Higher) {
    if (sweep.In(k)) higherIndependent.push_back(k);
  }
  std::vector<Function> basis;
  for (const std::size_t k : higherIndependent) basis.push_back(FunctionOf(sweep, n, k, parts.Higher));
  if (!Orthonormalise(basis)) return false;
  for (Function& function : functions) {
    for (const Function& direction : basis) SubtractMultiple(function, Product(function, direction), direction);
  }

  L.assign(n, std::vector<double>(functions.size(), 0.0));
  for (std::size_t m = 0; m < functions.size(); ++m) {
    for (std::size_t row = 0; row < n; ++row) L[row][m] = functions[m][row];
  }
  return true;
}

bool BuildType3Contrast(const CCoxFit& fit, std::vector<std::vector<double>>& L, int effect) {
  std::vector<int> columns(fit.m_pData->CoefficientCount);
  std::iota(columns.begin(), columns.end(), 0);
  return BuildType3Contrast(fit, fit.m_PackedInformation, columns, L, effect);
}

}  // namespace orv
