// FormulaOperations: the arithmetic of formulas, one operation at a time, for the evaluator and for constants.
//
// Both functions return false on a numerical failure: a result that is not finite from operands that are not missing,
// such as a division by zero, the logarithm or root of a negative number, or an overflow. A missing operand (NaN) gives
// a missing result, which is no failure, whatever the other operand is. Underflow to 0 is no failure. The comparisons
// are exact. No floating-point flag is raised by missing operands.
#pragma once

#include <cmath>
#include <limits>

#include "standalone/formula/FormulaProgram.h"

namespace orv {

inline constexpr double kMissingResult = std::numeric_limits<double>::quiet_NaN();

inline double TruthValue(bool truth) {
  return truth ? 1.0 : 0.0;
}

// False is stronger than missing.
inline double LogicalAnd(double left, double right) {
  if (left == 0.0 || right == 0.0) return 0.0;
  return std::isunordered(left, right) ? kMissingResult : 1.0;
}

// True is stronger than missing.
inline double LogicalOr(double left, double right) {
  if ((left != 0.0 && !std::isnan(left)) || (right != 0.0 && !std::isnan(right))) return 1.0;
  return std::isunordered(left, right) ? kMissingResult : 0.0;
}

[[nodiscard]] inline bool ApplyUnary(UnaryOperation operation, double x, double& result) {
  if (operation == UnaryOperation::Missing) {
    result = TruthValue(std::isnan(x));
    return true;
  }
  if (std::isnan(x)) {
    result = kMissingResult;
    return true;
  }
  switch (operation) {
    case UnaryOperation::Negate:
      result = -x;
      break;
    case UnaryOperation::Not:
      result = TruthValue(x == 0.0);
      break;
    case UnaryOperation::Missing:
      break;  // done above
    case UnaryOperation::Logarithm:
      result = std::log(x);
      break;
    case UnaryOperation::Logarithm10:
      result = std::log10(x);
      break;
    case UnaryOperation::Logarithm2:
      result = std::log2(x);
      break;
    case UnaryOperation::Exponential:
      result = std::exp(x);
      break;
    case UnaryOperation::SquareRoot:
      result = std::sqrt(x);
      break;
    case UnaryOperation::Absolute:
      result = std::abs(x);
      break;
    case UnaryOperation::Floor:
      result = std::floor(x);
      break;
    case UnaryOperation::Ceiling:
      result = std::ceil(x);
      break;
    case UnaryOperation::Round:
      result = std::round(x);  // half away from zero
      break;
    case UnaryOperation::Truncate:
      result = std::trunc(x);
      break;
    case UnaryOperation::Sign:
      result = TruthValue(x > 0.0) - TruthValue(x < 0.0);
      break;
    case UnaryOperation::Sine:
      result = std::sin(x);
      break;
    case UnaryOperation::Cosine:
      result = std::cos(x);
      break;
    case UnaryOperation::Tangent:
      result = std::tan(x);
      break;
    case UnaryOperation::ArcSine:
      result = std::asin(x);
      break;
    case UnaryOperation::ArcCosine:
      result = std::acos(x);
      break;
    case UnaryOperation::ArcTangent:
      result = std::atan(x);
      break;
  }
  return std::isfinite(result);
}

[[nodiscard]] inline bool ApplyBinary(BinaryOperation operation, double left, double right, double& result) {
  if (operation == BinaryOperation::And || operation == BinaryOperation::Or) {
    result = operation == BinaryOperation::And ? LogicalAnd(left, right) : LogicalOr(left, right);
    return true;
  }
  // Asked first, as the library takes missing ^ 0 and 1 ^ missing for 1, and comparing a NaN raises a flag.
  if (std::isunordered(left, right)) {
    result = kMissingResult;
    return true;
  }
  switch (operation) {
    case BinaryOperation::Add:
      result = left + right;
      break;
    case BinaryOperation::Subtract:
      result = left - right;
      break;
    case BinaryOperation::Multiply:
      result = left * right;
      break;
    case BinaryOperation::Divide:
      result = left / right;
      break;
    case BinaryOperation::Power:
      // A square is the one power that is met in every second formula.
      result = right == 2.0 ? left * left : std::pow(left, right);
      break;
    case BinaryOperation::Less:
      result = TruthValue(left < right);
      break;
    case BinaryOperation::LessOrEqual:
      result = TruthValue(left <= right);
      break;
    case BinaryOperation::Greater:
      result = TruthValue(left > right);
      break;
    case BinaryOperation::GreaterOrEqual:
      result = TruthValue(left >= right);
      break;
    case BinaryOperation::Equal:
      result = TruthValue(left == right);
      break;
    case BinaryOperation::NotEqual:
      result = TruthValue(left != right);
      break;
    case BinaryOperation::Minimum:
      result = right < left ? right : left;
      break;
    case BinaryOperation::Maximum:
      result = right > left ? right : left;
      break;
    case BinaryOperation::And:
    case BinaryOperation::Or:
      break;  // done above
  }
  return std::isfinite(result);
}

}  // namespace orv
