#include "standalone/formula/ProgramWriter.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "standalone/formula/FormulaOperations.h"

namespace orv {
namespace {

constexpr std::size_t kJumpBytes = sizeof(std::uint16_t);

std::byte OperationByte(RightOperand operand, unsigned operation) {
  return static_cast<std::byte>(static_cast<unsigned>(operand) << kOperandShift | operation);
}

}  // namespace

ProgramWriter::Piece ProgramWriter::Constant(double value) {
  const std::size_t start = m_program.size();
  Control(ControlOperation::Constant);
  PutDouble(value);
  Push();
  return {start, value, std::nullopt};
}

ProgramWriter::Piece ProgramWriter::Argument(unsigned argument) {
  const std::size_t start = m_program.size();
  Control(ControlOperation::Symbol);
  Put16(argument);
  Push();
  return {start, std::nullopt, argument};
}

ProgramWriter::Piece ProgramWriter::Unary(UnaryOperation operation, const Piece& operand) {
  double value = 0.0;
  if (operand.Constant && ApplyUnary(operation, *operand.Constant, value)) {
    Drop(operand, 1);
    return Constant(value);
  }
  m_program.push_back(OperationByte(RightOperand::Alone, static_cast<unsigned>(operation)));
  return {operand.Start, std::nullopt, std::nullopt};
}

ProgramWriter::Piece ProgramWriter::Binary(BinaryOperation operation, const Piece& left, const Piece& right) {
  double value = 0.0;
  if (left.Constant && right.Constant && ApplyBinary(operation, *left.Constant, *right.Constant, value)) {
    Drop(left, 2);
    return Constant(value);
  }
  PutBinary(operation, right);
  return {left.Start, std::nullopt, std::nullopt};
}

std::size_t ProgramWriter::BeginRight(BinaryOperation operation) {
  Control(operation == BinaryOperation::And ? ControlOperation::IfFalse : ControlOperation::IfTrue);
  Put16(0);
  return m_program.size();
}

ProgramWriter::Piece ProgramWriter::EndLogic(BinaryOperation operation,
                                             const Piece& left,
                                             const Piece& right,
                                             std::size_t jump) {
  PutBinary(operation, right);
  Patch(jump - kJumpBytes, jump);
  return {left.Start, std::nullopt, std::nullopt};
}

ProgramWriter::OpenBranch ProgramWriter::BeginThen(const Piece& condition) {
  Control(ControlOperation::Branch);
  Put16(0);
  Put16(0);
  --m_depth;
  return {condition.Start, m_program.size(), 0};
}

void ProgramWriter::BeginElse(OpenBranch& branch) {
  Control(ControlOperation::Jump);
  Put16(0);
  branch.AfterThen = m_program.size();
  Patch(branch.Branch - 2 * kJumpBytes, branch.Branch);
  --m_depth;  // of the two parts only one leaves its value
}

ProgramWriter::Piece ProgramWriter::EndIf(const OpenBranch& branch) {
  Patch(branch.Branch - kJumpBytes, branch.Branch);
  Patch(branch.AfterThen - kJumpBytes, branch.AfterThen);
  return {branch.Start, std::nullopt, std::nullopt};
}

std::vector<std::byte> ProgramWriter::Take() {
  Control(ControlOperation::End);
  return std::move(m_program);
}

void ProgramWriter::Control(ControlOperation operation) {
  m_program.push_back(OperationByte(RightOperand::Alone, static_cast<unsigned>(operation)));
}

void ProgramWriter::Put16(std::size_t value) {
  const auto bits = static_cast<std::uint16_t>(value);
  m_program.resize(m_program.size() + sizeof bits);
  std::memcpy(m_program.data() + m_program.size() - sizeof bits, &bits, sizeof bits);
}

void ProgramWriter::PutDouble(double value) {
  m_program.resize(m_program.size() + sizeof value);
  std::memcpy(m_program.data() + m_program.size() - sizeof value, &value, sizeof value);
}

void ProgramWriter::PutBinary(BinaryOperation operation, const Piece& right) {
  const auto number = static_cast<unsigned>(operation);
  if (right.Argument) {
    Drop(right, 1);
    m_program.push_back(OperationByte(RightOperand::WithSymbol, number));
    Put16(*right.Argument);
  } else if (right.Constant) {
    Drop(right, 1);
    m_program.push_back(OperationByte(RightOperand::WithConstant, number));
    PutDouble(*right.Constant);
  } else {
    m_program.push_back(OperationByte(RightOperand::WithStack, number));
    --m_depth;
  }
}

void ProgramWriter::Patch(std::size_t place, std::size_t from) {
  const auto bits = static_cast<std::uint16_t>(m_program.size() - from);
  std::memcpy(m_program.data() + place, &bits, sizeof bits);
}

void ProgramWriter::Push() {
  m_deepest = std::max(m_deepest, ++m_depth);
}

void ProgramWriter::Drop(const Piece& first, int values) {
  m_program.resize(first.Start);
  m_depth -= values;
}

}  // namespace orv
