// The grammar of docs/formulas.md by recursive descent: one function a level of precedence.
#include <fmt/format.h>

#include <optional>
#include <string_view>
#include <utility>

#include "standalone/formula/FormulaFunctions.h"
#include "standalone/formula/FormulaMessages.h"
#include "standalone/formula/FormulaTokens.h"
#include "standalone/formula/FormulaTree.h"

namespace orv {
namespace {

using Kind = FormulaNode::Kind;
namespace Messages = FormulaMessages;

// The operation of a sign at one level of precedence.
using OperationOfSign = std::optional<BinaryOperation> (*)(TokenKind);

std::optional<BinaryOperation> Disjunction(TokenKind sign) {
  return sign == TokenKind::Or ? std::optional(BinaryOperation::Or) : std::nullopt;
}

std::optional<BinaryOperation> Conjunction(TokenKind sign) {
  return sign == TokenKind::And ? std::optional(BinaryOperation::And) : std::nullopt;
}

std::optional<BinaryOperation> Comparing(TokenKind sign) {
  switch (sign) {
    case TokenKind::Equal:
      return BinaryOperation::Equal;
    case TokenKind::NotEqual:
      return BinaryOperation::NotEqual;
    case TokenKind::Less:
      return BinaryOperation::Less;
    case TokenKind::LessOrEqual:
      return BinaryOperation::LessOrEqual;
    case TokenKind::Greater:
      return BinaryOperation::Greater;
    case TokenKind::GreaterOrEqual:
      return BinaryOperation::GreaterOrEqual;
    default:
      return std::nullopt;
  }
}

std::optional<BinaryOperation> Adding(TokenKind sign) {
  if (sign == TokenKind::Plus) return BinaryOperation::Add;
  return sign == TokenKind::Minus ? std::optional(BinaryOperation::Subtract) : std::nullopt;
}

std::optional<BinaryOperation> Multiplying(TokenKind sign) {
  if (sign == TokenKind::Times) return BinaryOperation::Multiply;
  return sign == TokenKind::Divide ? std::optional(BinaryOperation::Divide) : std::nullopt;
}

class FormulaParser {
 public:
  FormulaParser(std::string_view formula, const FormulaNames& names)
      : m_formula(formula), m_names(names), m_tokens(formula) {
    m_token = m_tokens.Next();
  }

  FormulaNode Parse() {
    if (Is(TokenKind::End)) m_tokens.Fail(0, Messages::Empty());
    FormulaNode formula = Or();
    if (!Is(TokenKind::End)) FailAfterOperand("an operator or the end of the formula", true);
    return formula;
  }

 private:
  using Rule = FormulaNode (FormulaParser::*)();

  // Counts a level of nesting for as long as it exists.
  class Level {
   public:
    explicit Level(FormulaParser& parser) : m_depth(parser.m_depth) {
      if (m_depth == kMaximumNesting) parser.Fail(Messages::TooDeep());
      ++m_depth;
    }
    ~Level() { --m_depth; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

   private:
    int& m_depth;
  };

  // ---- Levels of precedence, the lowest first ---------------------------------------------------------------------

  FormulaNode Or() { return LeftToRight(&FormulaParser::And, Disjunction); }
  FormulaNode And() { return LeftToRight(&FormulaParser::Not, Conjunction); }
  FormulaNode Not() { return Is(TokenKind::Not) ? Prefixed(UnaryOperation::Not, &FormulaParser::Not) : Comparison(); }

  FormulaNode Comparison() {
    FormulaNode left = Sum();
    if (!Comparing(m_token.Kind)) return left;
    FormulaNode comparison = Joined(Kind::Comparison, std::move(left));
    AppendOperand(comparison, *Comparing(m_token.Kind), &FormulaParser::Sum);
    if (Comparing(m_token.Kind)) Fail(Messages::ChainedComparison(Written()));
    return comparison;
  }

  FormulaNode Sum() { return LeftToRight(&FormulaParser::Product, Adding); }
  FormulaNode Product() { return LeftToRight(&FormulaParser::Signed, Multiplying); }

  FormulaNode Signed() {
    if (Is(TokenKind::Minus)) return Prefixed(UnaryOperation::Negate, &FormulaParser::Signed);
    return Is(TokenKind::Plus) ? Prefixed(std::nullopt, &FormulaParser::Signed) : Power();
  }

  // The exponent is signed, so that 2^-1 can be written, and holds the next power, so that 2^3^2 is 2^(3^2).
  FormulaNode Power() {
    FormulaNode base = Operand();
    if (!Is(TokenKind::Power)) return base;
    const Level level(*this);
    FormulaNode power = Joined(Kind::Chain, std::move(base));
    AppendOperand(power, BinaryOperation::Power, &FormulaParser::Signed);
    return power;
  }

  FormulaNode Operand() {
    switch (m_token.Kind) {
      case TokenKind::Number:
        return Leaf(Kind::Number);
      case TokenKind::Quoted:
        return Leaf(Kind::Quoted);
      case TokenKind::VariableNumber:
        return Leaf(Kind::VariableNumber);
      case TokenKind::Name:
        return NameOrFunction();
      case TokenKind::Open:
        return Parenthesis();
      case TokenKind::Not:
        Fail(Messages::NotNeedsParentheses(Written()));
      default:
        Fail(Messages::Unexpected(Written(), "a number, a name, a function or \"(\""));
    }
  }

  FormulaNode Parenthesis() {
    const Level level(*this);
    const std::size_t open = m_token.Position;
    Advance();
    FormulaNode node = Or();
    Close(open, "an operator", true);
    return node;
  }

  FormulaNode NameOrFunction() {
    FormulaNode name = Leaf(Kind::Name);
    return Is(TokenKind::Open) ? Function(name) : name;
  }

  FormulaNode Function(const FormulaNode& name) {
    const FormulaFunction* function = FindFunction(name.Text);
    if (function == nullptr) FailFunction(name);
    const Level level(*this);
    const std::size_t open = m_token.Position;
    Advance();
    FormulaNode node;
    node.Position = name.Position;
    if (!Is(TokenKind::Close)) node.Operands.push_back(Or());
    while (Is(TokenKind::Comma)) AppendOperand(node, function->OfMany, &FormulaParser::Or);
    Close(open, "an operator, \",\"", false);
    SetFunction(*function, node);
    return node;
  }

  void SetFunction(const FormulaFunction& function, FormulaNode& node) const {
    const auto require = [&](std::size_t wanted, bool orMore) {
      const std::size_t given = node.Operands.size();
      if (given == wanted || (orMore && given > wanted)) return;
      m_tokens.Fail(node.Position, Messages::ArgumentCount(function.Form, wanted, orMore, given));
    };
    switch (function.What) {
      case FormulaFunction::Kind::OfOne:
        require(1, false);
        node.What = Kind::Unary;
        node.OfOne = function.OfOne;
        break;
      case FormulaFunction::Kind::OfMany:
        require(2, true);
        node.What = Kind::Chain;
        break;
      case FormulaFunction::Kind::If:
        require(3, false);
        node.What = Kind::If;
        break;
    }
  }

  // ---- Nodes ------------------------------------------------------------------------------------------------------

  FormulaNode Leaf(Kind kind) {
    FormulaNode node;
    node.What = kind;
    node.Position = m_token.Position;
    node.Length = m_token.Length;
    node.Value = m_token.Value;
    node.Text = std::move(m_token.Text);
    Advance();
    return node;
  }

  static FormulaNode Joined(Kind kind, FormulaNode first) {
    FormulaNode node;
    node.What = kind;
    node.Position = first.Position;
    node.Operands.push_back(std::move(first));
    return node;
  }

  // Steps over a sign or comma and appends the operand after it.
  void AppendOperand(FormulaNode& node, BinaryOperation join, Rule rule) {
    const std::size_t position = m_token.Position;
    Advance();
    FormulaNode operand = (this->*rule)();
    operand.Join = join;
    operand.JoinPosition = position;
    node.Operands.push_back(std::move(operand));
  }

  FormulaNode LeftToRight(Rule rule, OperationOfSign operationOf) {
    FormulaNode first = (this->*rule)();
    if (!operationOf(m_token.Kind)) return first;
    FormulaNode chain = Joined(Kind::Chain, std::move(first));
    while (const std::optional<BinaryOperation> join = operationOf(m_token.Kind)) AppendOperand(chain, *join, rule);
    return chain;
  }

  // A plus sign is no operation, but what it stands before is an amount and no longer a name or text.
  FormulaNode Prefixed(std::optional<UnaryOperation> operation, Rule rule) {
    const Level level(*this);
    FormulaNode node;
    node.What = operation ? Kind::Unary : Kind::Chain;
    node.OfOne = operation.value_or(UnaryOperation::Negate);
    node.Position = m_token.Position;
    Advance();
    node.Operands.push_back((this->*rule)());
    return node;
  }

  // ---- Tokens and faults ------------------------------------------------------------------------------------------

  bool Is(TokenKind kind) const { return m_token.Kind == kind; }
  std::string_view Written() const { return m_tokens.Written(m_token); }

  void Advance() {
    m_before = std::exchange(m_token, FormulaToken{});
    m_token = m_tokens.Next();
  }

  void Close(std::size_t open, std::string_view before, bool commaIsSlip) {
    if (!Is(TokenKind::Close)) {
      FailAfterOperand(
          fmt::format("{} or \")\" for the \"(\" at character {}", before, CharacterNumber(m_formula, open)),
          commaIsSlip);
    }
    Advance();
  }

  [[noreturn]] void Fail(FormulaFault fault) const { m_tokens.Fail(m_token.Position, std::move(fault)); }

  // `commaIsSlip`: no comma may stand here, so one between two numbers is a decimal comma.
  [[noreturn]] void FailAfterOperand(const std::string& expected, bool commaIsSlip) {
    if (commaIsSlip && Is(TokenKind::Comma) && m_before.Kind == TokenKind::Number) {
      const std::string_view whole = m_tokens.Written(m_before);
      const FormulaToken comma = m_token;
      Advance();
      if (Is(TokenKind::Number)) m_tokens.Fail(comma.Position, Messages::DecimalComma(whole, Written()));
      m_tokens.Fail(comma.Position, Messages::Unexpected(m_tokens.Written(comma), expected));
    }
    Fail(Messages::Unexpected(Written(), expected));
  }

  [[noreturn]] void FailFunction(const FormulaNode& name) const {
    if (m_names.Has(name.Text)) m_tokens.Fail(name.Position, Messages::VariableIsNoFunction(name.Text));
    const std::string_view number = LeadingNumber(name.Text);
    if (!number.empty()) m_tokens.Fail(name.Position, Messages::MalformedNumber(name.Text, number));
    m_tokens.Fail(name.Position, Messages::UnknownFunction(name.Text, NearestFunctions(name.Text)));
  }

  std::string_view m_formula;
  const FormulaNames& m_names;
  FormulaTokens m_tokens;
  FormulaToken m_token;
  FormulaToken m_before;  // the token before m_token
  int m_depth = 0;
};

}  // namespace

FormulaNode ParseFormula(std::string_view formula, const FormulaNames& names) {
  const std::size_t characters = CharacterNumber(formula, formula.size()) - 1;
  if (characters > kMaximumCharacters) throw FormulaError(formula, 0, FormulaMessages::TooManyCharacters(characters));
  return FormulaParser(formula, names).Parse();
}

}  // namespace orv
