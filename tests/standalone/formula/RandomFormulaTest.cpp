// Random formulas against a direct evaluation of the trees they were written from, and random texts against nothing at
// all. The sequences are the same in every run.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "FormulaRuns.h"
#include "standalone/formula/EvaluateFormula.h"

namespace orv {
namespace {

using testing::FormulaRun;
using testing::kMissing;
using testing::NamedValue;
using testing::RunFormula;
using testing::Same;

// Levels of precedence; a part of a lower level than its place asks for needs parentheses.
enum Level { kOr = 1, kAnd, kNot, kComparison, kSum, kProduct, kSigned, kPower, kOperand };

struct Tree {
  std::string What;  // an operator, a function, "number" or "variable"
  double Value = 0.0;
  std::size_t Variable = 0;
  std::vector<Tree> Parts;
};

// The outcome of a part: a failure ends everything, a missing value is NaN.
struct Outcome {
  bool Failed = false;
  double Value = 0.0;
};

Outcome Checked(double value) {
  return {!std::isfinite(value), value};
}

Outcome Failure() {
  return {true, 0.0};
}

// True 1, false 0, unknown -1.
int Truth(double value) {
  return std::isnan(value) ? -1 : value != 0.0 ? 1 : 0;
}

double FromTruth(int truth) {
  return truth < 0 ? kMissing : truth;
}

double OfOne(const std::string& what, double x) {
  if (what == "log") return std::log(x);
  if (what == "log10") return std::log10(x);
  if (what == "log2") return std::log2(x);
  if (what == "exp") return std::exp(x);
  if (what == "sqrt") return std::sqrt(x);
  if (what == "abs") return std::fabs(x);
  if (what == "floor") return std::floor(x);
  if (what == "ceil") return std::ceil(x);
  if (what == "round") return x < 0.0 ? -std::floor(-x + 0.5) : std::floor(x + 0.5);
  if (what == "trunc") return x < 0.0 ? std::ceil(x) : std::floor(x);
  if (what == "sign") return x > 0.0 ? 1.0 : x < 0.0 ? -1.0 : 0.0;
  if (what == "sin") return std::sin(x);
  if (what == "cos") return std::cos(x);
  if (what == "atan") return std::atan(x);
  if (what == "minus") return -x;
  ADD_FAILURE() << what;
  return 0.0;
}

double OfTwo(const std::string& what, double a, double b) {
  if (what == "+") return a + b;
  if (what == "-") return a - b;
  if (what == "*") return a * b;
  if (what == "/") return a / b;
  if (what == "^") return std::pow(a, b);
  if (what == "=") return a == b ? 1.0 : 0.0;
  if (what == "<>") return a == b ? 0.0 : 1.0;
  if (what == "<") return a < b ? 1.0 : 0.0;
  if (what == "<=") return a > b ? 0.0 : 1.0;
  if (what == ">") return a > b ? 1.0 : 0.0;
  if (what == ">=") return a < b ? 0.0 : 1.0;
  if (what == "min") return a < b ? a : b;
  if (what == "max") return a > b ? a : b;
  ADD_FAILURE() << what;
  return 0.0;
}

Outcome Evaluate(const Tree& tree, const std::vector<NamedValue>& values);

Outcome EvaluateLogic(const Tree& tree, const std::vector<NamedValue>& values) {
  const int decisive = tree.What == "or" ? 1 : 0;
  const Outcome left = Evaluate(tree.Parts[0], values);
  if (left.Failed) return Failure();
  if (Truth(left.Value) == decisive) return {false, static_cast<double>(decisive)};
  const Outcome right = Evaluate(tree.Parts[1], values);
  if (right.Failed) return Failure();
  if (Truth(right.Value) == decisive) return {false, static_cast<double>(decisive)};
  return {false, FromTruth(Truth(left.Value) < 0 || Truth(right.Value) < 0 ? -1 : 1 - decisive)};
}

Outcome Evaluate(const Tree& tree, const std::vector<NamedValue>& values) {
  if (tree.What == "number") return {false, tree.Value};
  if (tree.What == "variable") return {false, values[tree.Variable].Value};
  if (tree.What == "and" || tree.What == "or") return EvaluateLogic(tree, values);
  const Outcome first = Evaluate(tree.Parts[0], values);
  if (first.Failed) return Failure();
  if (tree.What == "if") {
    if (Truth(first.Value) < 0) return {false, kMissing};
    return Evaluate(tree.Parts[Truth(first.Value) == 1 ? 1 : 2], values);
  }
  if (tree.What == "missing") return {false, std::isnan(first.Value) ? 1.0 : 0.0};
  if (tree.What == "not") return {false, FromTruth(Truth(first.Value) < 0 ? -1 : 1 - Truth(first.Value))};
  if (tree.What == "plus") return first;
  if (tree.Parts.size() == 1) return std::isnan(first.Value) ? first : Checked(OfOne(tree.What, first.Value));
  Outcome so_far = first;
  for (std::size_t i = 1; i < tree.Parts.size(); ++i) {
    const Outcome next = Evaluate(tree.Parts[i], values);
    if (next.Failed) return Failure();
    so_far = std::isnan(so_far.Value) || std::isnan(next.Value) ? Outcome{false, kMissing}
                                                                : Checked(OfTwo(tree.What, so_far.Value, next.Value));
    if (so_far.Failed) return Failure();
  }
  return so_far;
}

class Random {
 public:
  explicit Random(unsigned seed) : m_engine(seed) {}
  int Below(int count) { return static_cast<int>(m_engine() % static_cast<unsigned>(count)); }
  bool Chance(int oneIn) { return Below(oneIn) == 0; }
  template <typename T>
  T Of(const std::vector<T>& choices) {
    return choices[static_cast<std::size_t>(Below(static_cast<int>(choices.size())))];
  }

 private:
  std::mt19937 m_engine;
};

Tree RandomTree(Random& random, int depth, std::size_t variables) {
  Tree tree;
  const auto part = [&] { tree.Parts.push_back(RandomTree(random, depth - 1, variables)); };
  if (depth == 0 || random.Chance(8)) {
    if (random.Chance(2)) {
      tree.What = "variable";
      tree.Variable = static_cast<std::size_t>(random.Below(static_cast<int>(variables)));
    } else {
      tree.What = "number";
      tree.Value = random.Of<double>({0.0, 1.0, 2.0, 3.0, 0.5, 2.5, 10.0, 0.125, 1e-3, 1e10, 1e200, 1e-300, 7.0});
    }
    return tree;
  }
  switch (random.Below(7)) {
    case 0:
      tree.What = random.Of<std::string>({"minus", "minus", "plus", "not", "missing"});
      part();
      break;
    case 1:
      tree.What = random.Of<std::string>({"log", "log10", "log2", "exp", "sqrt", "abs", "floor", "ceil", "round",
                                          "trunc", "sign", "sin", "cos", "atan"});
      part();
      break;
    case 2:
      tree.What = random.Of<std::string>({"and", "or"});
      part();
      part();
      break;
    case 3:
      tree.What = random.Of<std::string>({"=", "<>", "<", "<=", ">", ">="});
      part();
      part();
      break;
    case 4:
      tree.What = random.Of<std::string>({"if", "min", "max"});
      part();
      part();
      if (tree.What == "if" || random.Chance(2)) part();
      break;
    default:
      tree.What = random.Of<std::string>({"+", "-", "*", "/", "+", "-", "*", "^"});
      part();
      part();
      break;
  }
  return tree;
}

// How a tree is written down.
class Writing {
 public:
  // `everyParenthesis`: around every part; otherwise only where they are needed, and now and then elsewhere.
  Writing(Random& random, const std::vector<NamedValue>& values, bool everyParenthesis)
      : m_random(random), m_values(values), m_everyParenthesis(everyParenthesis) {}

  std::string Text(const Tree& tree, Level place = kOr) {
    Level level = kOperand;
    std::string text = Unenclosed(tree, level);
    const bool enclosed = level < place || (m_everyParenthesis && !tree.Parts.empty()) || m_random.Chance(30);
    return enclosed ? "(" + Blank() + text + Blank() + ")" : text;
  }

 private:
  std::string Unenclosed(const Tree& tree, Level& level) {
    const std::string& what = tree.What;
    const auto joined = [&](Level own, Level left, Level right, const std::string& sign) {
      level = own;
      return Text(tree.Parts[0], left) + Blank() + sign + Blank() + Text(tree.Parts[1], right);
    };
    if (what == "number") return fmt::format("{}", tree.Value);
    if (what == "variable") return Name(m_values[tree.Variable].Name);
    if (what == "or") return joined(kOr, kOr, kAnd, m_random.Of<std::string>({" or ", "|", "||", " OR "}));
    if (what == "and") return joined(kAnd, kAnd, kNot, m_random.Of<std::string>({" and ", "&", "&&", " And "}));
    if (what == "not") return level = kNot, "not " + Text(tree.Parts[0], kNot);
    if (what == "=") return joined(kComparison, kSum, kSum, m_random.Of<std::string>({"=", "=="}));
    if (what == "<>") return joined(kComparison, kSum, kSum, m_random.Of<std::string>({"<>", "!="}));
    if (what[0] == '<' || what[0] == '>') return joined(kComparison, kSum, kSum, what);
    if (what == "+" || what == "-") return joined(kSum, kSum, kProduct, what);
    if (what == "*" || what == "/") return joined(kProduct, kProduct, kSigned, what);
    if (what == "^") return joined(kPower, kOperand, kSigned, m_random.Of<std::string>({"^", "**"}));
    if (what == "minus" || what == "plus") {
      level = kSigned;
      return (what == "minus" ? "-" : "+") + Blank() + Text(tree.Parts[0], kSigned);
    }
    std::string arguments;
    for (const Tree& part : tree.Parts) arguments += (arguments.empty() ? "" : ",") + Blank() + Text(part);
    return what + Blank() + "(" + arguments + Blank() + ")";
  }

  std::string Name(const std::string& name) {
    if (name.find(' ') != std::string::npos) return m_random.Chance(2) ? '"' + name + '"' : '\'' + name + '\'';
    return m_random.Chance(5) ? '"' + name + '"' : name;
  }

  std::string Blank() { return m_random.Chance(4) ? " " : ""; }

  Random& m_random;
  const std::vector<NamedValue>& m_values;
  bool m_everyParenthesis;
};

std::string UpperCase(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

TEST(RandomFormulas, HaveTheValuesOfTheirTrees) {
  Random random(20240331);
  int failed = 0;
  int missing = 0;
  int valid = 0;
  for (int round = 0; round < 20000; ++round) {
    std::vector<NamedValue> values = {{"x", 0.0}, {"ph.ecog", 0.0}, {"blood pressure", 0.0}, {"T_", 0.0}};
    for (NamedValue& value : values)
      value.Value = random.Of<double>({0.0, 1.0, 2.0, -1.5, 3.25, 1e-5, -40.0, 1e150, 0.5, kMissing});
    const Tree tree = RandomTree(random, 1 + random.Below(6), values.size());
    const Outcome expected = Evaluate(tree, values);
    (expected.Failed ? failed : std::isnan(expected.Value) ? missing : valid) += 1;
    // "T_" in quotes would be a variable.
    std::string text = Writing(random, values, false).Text(tree);
    std::string enclosed = Writing(random, values, true).Text(tree);
    for (std::string* written : {&text, &enclosed}) {
      for (std::size_t at = 0; (at = written->find("\"T_\"")) != std::string::npos;) written->replace(at, 4, "T_");
    }
    for (const std::string& written : {text, enclosed, UpperCase(text)}) {
      const FormulaRun run = RunFormula(written, values);
      ASSERT_EQ(run.Failed, expected.Failed) << written;
      if (!expected.Failed) {
        ASSERT_TRUE(run.Value == expected.Value || Same(run.Value, expected.Value))
            << written << " gave " << run.Value << ", not " << expected.Value;
      }
    }
  }
  // The sample says something about each kind of outcome.
  EXPECT_GT(valid, 5000);
  EXPECT_GT(missing, 2000);
  EXPECT_GT(failed, 500);
}

TEST(RandomTexts, CompileOrAreRefusedWithAPlace) {
  const std::string seeds[] = {
      "if(x > 1 and not missing(ph.ecog), log(T_ + 1) * x, -x^2 / 3.5e-2)",
      "\"blood pressure\" <> 'x' | max(1, 2, v3) >= #2 & pi ** 2",
      "\xC3\xA4 + \xE2\x89\xA4 1,5 ! => ((((abs(sin(",
  };
  const FormulaNames names = testing::Names({"x", "ph.ecog", "blood pressure", "\xC3\xA4"});
  Random random(7);
  int compiled = 0;
  int refused = 0;
  for (int round = 0; round < 30000; ++round) {
    std::string text = random.Of<std::string>({seeds[0], seeds[1], seeds[2]});
    for (int change = random.Below(4); change >= 0; --change) {
      const auto at = static_cast<std::size_t>(random.Below(static_cast<int>(text.size()) + 1));
      const auto length = static_cast<std::size_t>(random.Below(6));
      switch (random.Below(3)) {
        case 0:
          text.erase(at, length);
          break;
        case 1:
          text.insert(at, 1, static_cast<char>(random.Below(256)));
          break;
        default: {
          const std::string& other = seeds[random.Below(3)];
          text.insert(at, other.substr(static_cast<std::size_t>(random.Below(static_cast<int>(other.size()))), length));
          break;
        }
      }
    }
    try {
      const CompiledFormula formula = CompileFormula(text, names, TimeSymbol::Allowed);
      const std::vector<double> arguments(formula.Symbols.size(), 1.5);
      double result = 0.0;
      const int status = EvaluateFormula(formula.Program.data(), arguments.data(), result);
      ASSERT_TRUE(status == 0 || status == 1) << text;
      ASSERT_FALSE(std::isinf(result)) << text;
      ++compiled;
    } catch (const FormulaError& error) {
      ASSERT_LE(error.Position(), text.size()) << text;
      ASSERT_GE(error.Character(), 1U) << text;
      ASSERT_TRUE(std::string(error.what()).starts_with(fmt::format("at character {}: ", error.Character()))) << text;
      ASSERT_TRUE(std::string(error.what()).ends_with('.')) << error.what();
      ++refused;
    }
  }
  EXPECT_GT(compiled, 1000);
  EXPECT_GT(refused, 10000);
}

}  // namespace
}  // namespace orv
