// ProgramWriter: writes the instructions of a formula, piece by piece, in the order in which they run.
//
// A piece is the code of one part of the formula and leaves one value on the stack. Pieces follow one another: an
// operation takes the last piece, or the last two. Operations on constants are done at once, and an operation whose
// right operand is a lone argument or constant takes it into its instruction. What fails on constants is left to the
// evaluation, since it may never be reached.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "standalone/formula/FormulaProgram.h"

namespace orv {

class ProgramWriter {
 public:
  struct Piece {
    std::size_t Start = 0;             // where its code begins
    std::optional<double> Constant;    // when it is nothing but a constant
    std::optional<unsigned> Argument;  // when it is nothing but an argument
  };

  Piece Constant(double value);
  // The place of the argument, from 0.
  Piece Argument(unsigned argument);
  Piece Unary(UnaryOperation operation, const Piece& operand);
  // REQUIRES: `right` was written just after `left`; the operation is neither And nor Or.
  Piece Binary(BinaryOperation operation, const Piece& left, const Piece& right);

  // And, Or: write the left piece, BeginRight, the right piece, EndLogic. The right piece is passed over when the left
  // one decides. Returns the jump that EndLogic needs.
  [[nodiscard]] std::size_t BeginRight(BinaryOperation operation);
  Piece EndLogic(BinaryOperation operation, const Piece& left, const Piece& right, std::size_t jump);

  // If: write the condition, BeginThen, the second piece, BeginElse, the third piece, EndIf.
  struct OpenBranch {
    std::size_t Start = 0;      // of the condition
    std::size_t Branch = 0;     // after the instruction
    std::size_t AfterThen = 0;  // after the jump over the else part
  };
  [[nodiscard]] OpenBranch BeginThen(const Piece& condition);
  void BeginElse(OpenBranch& branch);
  Piece EndIf(const OpenBranch& branch);

  // Beyond a limit the program is of no use.
  bool TooLong() const { return m_program.size() + kEndBytes > kMaximumProgramBytes; }
  bool TooDeep() const { return m_deepest > kStackSlots; }

  // Ends the program and gives it away. REQUIRES: one piece is left; neither TooLong() nor TooDeep().
  std::vector<std::byte> Take();

 private:
  static constexpr std::size_t kEndBytes = 1;

  void Control(ControlOperation operation);
  void Put16(std::size_t value);
  void PutDouble(double value);
  void PutBinary(BinaryOperation operation, const Piece& right);
  // Makes the jump whose 16 bits stand at `place` lead from `from` to the end of the program.
  void Patch(std::size_t place, std::size_t from);
  void Push();
  void Drop(const Piece& first, int values);

  std::vector<std::byte> m_program;
  int m_depth = 0;    // values on the stack
  int m_deepest = 0;  // most of them so far
};

}  // namespace orv
