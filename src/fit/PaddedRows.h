// Rows of doubles as the kernels of a pass want them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fit/PassKernels.h"
#include "host/WorkArray.h"

namespace orv {

// `rows` rows of p values each, PaddedOrder(p) apart and zero at first, each at the head of a line of the cache.
class PaddedRows {
 public:
  PaddedRows(Host& host, int rows, int p)
      : m_stride(PaddedOrder(static_cast<std::size_t>(p))),
        m_values(host, static_cast<std::size_t>(rows) * m_stride + kVectorDoubles) {
    constexpr std::size_t kLine = kVectorDoubles * sizeof(double);
    const auto address = reinterpret_cast<std::uintptr_t>(m_values.Data());
    m_first = m_values.Data() + (kLine - address % kLine) % kLine / sizeof(double);
  }

  bool Failed() const { return m_values.Failed(); }
  double* Row(int row) { return m_first + static_cast<std::size_t>(row) * m_stride; }
  const double* Row(int row) const { return m_first + static_cast<std::size_t>(row) * m_stride; }
  void Clear() { m_values.Clear(); }

 private:
  std::size_t m_stride;
  WorkArray<double> m_values;
  double* m_first = nullptr;
};

}  // namespace orv
