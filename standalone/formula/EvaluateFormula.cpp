#include "standalone/formula/EvaluateFormula.h"

#include <cstdint>
#include <cstring>

#include "standalone/formula/FormulaOperations.h"
#include "standalone/formula/FormulaProgram.h"

namespace orv {
namespace {

std::uint16_t Read16(const std::byte*& place) {
  std::uint16_t value = 0;
  std::memcpy(&value, place, sizeof value);
  place += sizeof value;
  return value;
}

double ReadDouble(const std::byte*& place) {
  double value = 0.0;
  std::memcpy(&value, place, sizeof value);
  place += sizeof value;
  return value;
}

}  // namespace

// The analyser does not know that a program takes off the stack only what it has put there.
// NOLINTBEGIN(clang-analyzer-core.uninitialized.Assign)
int EvaluateFormula(const std::byte* program, const double* arguments, double& result) noexcept {
  // The values below the top. Not set to zero first: that would take longer than most formulas.
  double stack[kStackSlots];
  double* below = stack;
  double top = 0.0;
  for (const std::byte* at = program;;) {
    const auto code = std::to_integer<unsigned>(*at++);
    const unsigned operation = code & kOperationMask;
    double right = 0.0;
    switch (static_cast<RightOperand>(code >> kOperandShift)) {
      case RightOperand::WithStack:
        right = top;
        top = *--below;
        break;
      case RightOperand::WithSymbol:
        right = arguments[Read16(at)];
        break;
      case RightOperand::WithConstant:
        right = ReadDouble(at);
        break;
      case RightOperand::Alone:
        switch (static_cast<ControlOperation>(operation)) {
          case ControlOperation::End:
            if (std::isinf(top)) return 1;
            result = top;
            return 0;
          case ControlOperation::Constant:
            *below++ = top;
            top = ReadDouble(at);
            continue;
          case ControlOperation::Symbol:
            *below++ = top;
            top = arguments[Read16(at)];
            continue;
          case ControlOperation::Jump: {
            const std::uint16_t distance = Read16(at);
            at += distance;
            continue;
          }
          case ControlOperation::Branch: {
            const std::uint16_t elsePart = Read16(at);
            const std::uint16_t end = Read16(at);
            if (std::isnan(top)) {
              at += end;  // the missing condition is the result
            } else {
              if (top == 0.0) at += elsePart;
              top = *--below;
            }
            continue;
          }
          case ControlOperation::IfFalse: {
            const std::uint16_t distance = Read16(at);
            if (top == 0.0) {
              top = 0.0;  // from -0
              at += distance;
            }
            continue;
          }
          case ControlOperation::IfTrue: {
            const std::uint16_t distance = Read16(at);
            if (top != 0.0 && !std::isnan(top)) {
              top = 1.0;
              at += distance;
            }
            continue;
          }
        }
        if (!ApplyUnary(static_cast<UnaryOperation>(operation), top, top)) return 1;
        continue;
    }
    if (!ApplyBinary(static_cast<BinaryOperation>(operation), top, right, top)) return 1;
  }
}
// NOLINTEND(clang-analyzer-core.uninitialized.Assign)

}  // namespace orv
