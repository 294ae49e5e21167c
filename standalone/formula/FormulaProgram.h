// FormulaProgram: the instructions of a compiled formula.
//
// A program is a flat sequence of bytes for a machine with a stack of doubles whose top value is at hand. It is made by
// ProgramWriter and run by EvaluateFormula. An instruction is one byte, followed by what it needs, without padding and
// in the byte order of the machine: a program is not meant for files.
//
//   bits 7-6 of the byte      bits 5-0            followed by           effect
//   0 Alone                   ControlOperation    see there             see there
//   0 Alone                   UnaryOperation      nothing               top = op(top)
//   1 WithStack               BinaryOperation     nothing               top = below op top; the stack shrinks by one
//   2 WithSymbol              BinaryOperation     uint16 argument       top = top op argument
//   3 WithConstant            BinaryOperation     double                top = top op constant
//
// NaN is the missing value. Logic: 0 is false, NaN unknown, anything else true; results are 1, 0 or NaN.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orv {

// So jumps and the places of arguments fit 16 bits.
inline constexpr std::size_t kMaximumProgramBytes = 32000;
// Values on the stack at a time.
inline constexpr int kStackSlots = 256;

enum class RightOperand : std::uint8_t { Alone = 0, WithStack = 1, WithSymbol = 2, WithConstant = 3 };

inline constexpr unsigned kOperandShift = 6;
inline constexpr unsigned kOperationMask = 0x3F;

// Jumps are uint16, counted from the byte after the instruction, and lead forward.
enum class ControlOperation : std::uint8_t {
  End,       // the result is the top
  Constant,  // double: push it
  Symbol,    // uint16: push this argument, from 0
  Jump,      // uint16
  Branch,    // uint16 to the else part, uint16 to the end: take the condition off the stack; go on when it is true, to
             // the else part when false; when it is missing push the missing value and go to the end
  IfFalse,   // uint16: when the top is false make it 0 and jump; otherwise go on with it on the stack
  IfTrue,    // uint16: when the top is true make it 1 and jump; otherwise go on with it on the stack
};

enum class UnaryOperation : std::uint8_t {
  Negate = 8,  // above the control operations
  Not,
  Missing,
  Logarithm,
  Logarithm10,
  Logarithm2,
  Exponential,
  SquareRoot,
  Absolute,
  Floor,
  Ceiling,
  Round,
  Truncate,
  Sign,
  Sine,
  Cosine,
  Tangent,
  ArcSine,
  ArcCosine,
  ArcTangent,
};

enum class BinaryOperation : std::uint8_t {
  Add,
  Subtract,
  Multiply,
  Divide,
  Power,
  Less,
  LessOrEqual,
  Greater,
  GreaterOrEqual,
  Equal,
  NotEqual,
  Minimum,
  Maximum,
  And,
  Or,
};

}  // namespace orv
