#include "standalone/formula/CompileFormula.h"

#include <optional>
#include <unordered_map>
#include <utility>

#include "standalone/formula/FormulaMessages.h"
#include "standalone/formula/FormulaTree.h"
#include "standalone/formula/ProgramWriter.h"

namespace orv {
namespace {

using Kind = FormulaNode::Kind;
using Piece = ProgramWriter::Piece;

// Walks the tree in the order of the text, so that the symbols come in the order of their first appearance.
class FormulaGenerator {
 public:
  FormulaGenerator(std::string_view formula, const FormulaNames& names, TimeSymbol time)
      : m_formula(formula), m_meanings(formula, names, time) {}

  CompiledFormula Generate(const FormulaNode& root) {
    Write(root);
    return {m_writer.Take(), std::move(m_symbols)};
  }

 private:
  Piece Write(const FormulaNode& node) {
    const Piece piece = WriteUnchecked(node);
    CheckLimits(node);
    return piece;
  }

  Piece WriteUnchecked(const FormulaNode& node) {
    switch (node.What) {
      case Kind::Number:
        return m_writer.Constant(node.Value);
      case Kind::Name:
      case Kind::Quoted:
      case Kind::VariableNumber:
        return WriteMeaning(m_meanings.Of(node));
      case Kind::Unary:
        return m_writer.Unary(node.OfOne, Write(node.Operands.front()));
      case Kind::Comparison:
        return WriteComparison(node.Operands.front(), node.Operands.back());
      case Kind::If:
        return WriteIf(node);
      case Kind::Chain:
        break;
    }
    return WriteChain(node);
  }

  Piece WriteMeaning(const FormulaMeaning& meaning) {
    if (!meaning.Symbol) return m_writer.Constant(meaning.Constant);
    const auto [place, isNew] = m_arguments.try_emplace(*meaning.Symbol, static_cast<unsigned>(m_symbols.size()));
    if (isNew) m_symbols.push_back(*meaning.Symbol);
    return m_writer.Argument(place->second);
  }

  Piece WriteChain(const FormulaNode& chain) {
    Piece left = Write(chain.Operands.front());
    for (std::size_t i = 1; i < chain.Operands.size(); ++i) {
      const FormulaNode& operand = chain.Operands[i];
      if (operand.Join == BinaryOperation::And || operand.Join == BinaryOperation::Or) {
        const std::size_t jump = m_writer.BeginRight(operand.Join);
        left = m_writer.EndLogic(operand.Join, left, Write(operand), jump);
      } else {
        left = m_writer.Binary(operand.Join, left, Write(operand));
      }
      CheckLimits(operand);
    }
    return left;
  }

  // Where both sides might be texts of each other, the left one is the variable.
  Piece WriteComparison(const FormulaNode& left, const FormulaNode& right) {
    const std::optional<double> rightText = m_meanings.AsText(right, left, right.Join);
    const std::optional<double> leftText = rightText ? std::nullopt : m_meanings.AsText(left, right, right.Join);
    const Piece leftPiece = leftText ? m_writer.Constant(*leftText) : Write(left);
    const Piece rightPiece = rightText ? m_writer.Constant(*rightText) : Write(right);
    return m_writer.Binary(right.Join, leftPiece, rightPiece);
  }

  Piece WriteIf(const FormulaNode& node) {
    ProgramWriter::OpenBranch branch = m_writer.BeginThen(Write(node.Operands[0]));
    Write(node.Operands[1]);
    m_writer.BeginElse(branch);
    Write(node.Operands[2]);
    return m_writer.EndIf(branch);
  }

  void CheckLimits(const FormulaNode& node) const {
    if (m_writer.TooLong()) throw FormulaError(m_formula, node.Position, FormulaMessages::TooLong());
    if (m_writer.TooDeep()) throw FormulaError(m_formula, node.Position, FormulaMessages::TooDeep());
  }

  std::string_view m_formula;
  FormulaMeanings m_meanings;
  ProgramWriter m_writer;
  std::vector<int> m_symbols;
  std::unordered_map<int, unsigned> m_arguments;  // the place of each symbol in the list
};

}  // namespace

CompiledFormula CompileFormula(std::string_view formula, const FormulaNames& names, TimeSymbol time) {
  return FormulaGenerator(formula, names, time).Generate(ParseFormula(formula, names));
}

}  // namespace orv
