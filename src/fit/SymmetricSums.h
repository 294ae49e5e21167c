// Elementary symmetric sums of relative risks with their derivatives, built up member by member.
#pragma once

#include "fit/CompensatedSum.h"
#include "host/WorkArray.h"

namespace orv {

// Over all subsets A of d of the members so far, with r_A the product of their r and x_A the sum of their x:
//
//   Value(d)   sum of r_A
//   First(d)   sum of r_A x_A                p elements
//   Second(d)  sum of r_A x_A x_A'           lower triangle packed by rows
//
// A member joins all orders at once, highest first, so one column of values serves: the store is proportional to the
// largest order and not to the number of members. About 2 p^2 multiplications a member and order.
// Source: Gail, Lubin and Rubinstein (1981), with derivatives by the product rule.
class SymmetricSums {
 public:
  // Orders up to `largestOrder` >= 1.
  SymmetricSums(Host& host, int p, int largestOrder);

  bool Failed() const { return m_values.Failed() || m_first.Failed() || m_second.Failed(); }
  void Clear();
  // Adds a member to the orders from `lowest` to `highest`, which lie in 1 to the largest order. Orders outside are out
  // of date from then on; Value(d) after m members needs the orders from d - (m - k) to d of the k-th member.
  void Join(double r, const double* x, int lowest, int highest);

  double Value(int d) const { return m_values[static_cast<std::size_t>(d)].Value(); }
  const double* First(int d) const { return m_first.Data() + static_cast<std::size_t>(d) * m_p; }
  const double* Second(int d) const { return m_second.Data() + static_cast<std::size_t>(d) * m_packed; }

 private:
  void JoinOrder(double r, const double* x, std::size_t d);

  const std::size_t m_p;
  const std::size_t m_packed;
  WorkArray<CompensatedSum> m_values;
  WorkArray<double> m_first;
  WorkArray<double> m_second;
};

}  // namespace orv
