// Every message, to the letter and with its place.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FormulaRuns.h"

namespace orv {
namespace {

using testing::Names;
using testing::Refusal;

FormulaNames TrialNames() {
  return Names({"age", "arm", "ph.ecog", "Dose", "dose ", "Site", "site"});
}

struct Message {
  std::string formula;
  std::string message;
};

void ExpectMessages(const std::vector<Message>& cases) {
  for (const Message& c : cases) EXPECT_EQ(Refusal(c.formula, TrialNames()), c.message) << c.formula;
}

TEST(FormulaMessages, SayWhatIsExpected) {
  const std::string operand = "expected a number, a name, a function or \"(\".";
  const std::string after = "expected an operator or the end of the formula.";
  ExpectMessages({
      {"", "at character 1: the formula is empty."},
      {"  \t\n", "at character 1: the formula is empty."},
      {"1+", "at character 3: found the end of the formula, " + operand},
      {"1+ ", "at character 4: found the end of the formula, " + operand},
      {"*2", "at character 1: found \"*\", " + operand},
      {"age+*2", "at character 5: found \"*\", " + operand},
      {"age and", "at character 8: found the end of the formula, " + operand},
      {"and age", "at character 1: found \"and\", " + operand},
      {"()", "at character 2: found \")\", " + operand},
      {")", "at character 1: found \")\", " + operand},
      {"=age", "at character 1: found \"=\", " + operand},
      {"max(,1)", "at character 5: found \",\", " + operand},
      {"max(1,)", "at character 7: found \")\", " + operand},
      {"-", "at character 2: found the end of the formula, " + operand},
      {"2^", "at character 3: found the end of the formula, " + operand},
      {"1 < ", "at character 5: found the end of the formula, " + operand},
      {"not", "at character 4: found the end of the formula, " + operand},
      {"$age", "at character 1: found \"$\", " + operand},
      {"age age", "at character 5: found \"age\", " + after},
      {"2 age", "at character 3: found \"age\", " + after},
      {"age 2", "at character 5: found \"2\", " + after},
      {"age 'arm'", "at character 5: found \"'arm'\", " + after},
      {"(age) (arm)", "at character 7: found \"(\", " + after},
      {"age)", "at character 4: found \")\", " + after},
      {"age, arm", "at character 4: found \",\", " + after},
      {"age;", "at character 4: found \";\", " + after},
      {"age not arm", "at character 5: found \"not\", " + after},
      {"age @ 1", "at character 5: found \"@\", " + after},
      {"age # comment", "at character 5: found \"#\", " + after},
      {"age \xE2\x88\x9A 2", "at character 5: found \"\xE2\x88\x9A\", " + after},
      {"3 % 2", "at character 3: found \"%\", " + after},
      {std::string("age\0+1", 6), "at character 4: found \"\xEF\xBF\xBD\", " + after},
  });
}

TEST(FormulaMessages, NameTheParenthesisThatIsOpen) {
  ExpectMessages({
      {"(age",
       "at character 5: found the end of the formula, expected an operator or \")\" for the \"(\" at character 1."},
      {"1+(age*(arm+2)",
       "at character 15: found the end of the formula, expected an operator or \")\" for the \"(\" at "
       "character 3."},
      {"(age arm)", "at character 6: found \"arm\", expected an operator or \")\" for the \"(\" at character 1."},
      {"(age, arm)", "at character 5: found \",\", expected an operator or \")\" for the \"(\" at character 1."},
      {"log(age",
       "at character 8: found the end of the formula, expected an operator, \",\" or \")\" for the \"(\" at "
       "character 4."},
      {"min(1 2)", "at character 7: found \"2\", expected an operator, \",\" or \")\" for the \"(\" at character 4."},
  });
}

TEST(FormulaMessages, ExplainSlips) {
  ExpectMessages({
      {"1 < age < 3",
       "at character 9: found \"<\", the second comparison in a row. Join them with and, as in a < b and b < "
       "c."},
      {"age = arm = 1",
       "at character 11: found \"=\", the second comparison in a row. Join them with and, as in a < b and "
       "b < c."},
      {"1 + not age", "at character 5: \"not\" needs parentheses here, as in 1 + (not a)."},
      {"age = NOT arm", "at character 7: \"NOT\" needs parentheses here, as in 1 + (not a)."},
      {"- not age", "at character 3: \"not\" needs parentheses here, as in 1 + (not a)."},
      {"age > 1,5", "at character 8: a decimal comma. Write the number with a point: 1.5."},
      {"(age > 1,5)", "at character 9: a decimal comma. Write the number with a point: 1.5."},
      {"1, 5", "at character 2: a decimal comma. Write the number with a point: 1.5."},
      {"1,age", "at character 2: found \",\", expected an operator or the end of the formula."},
      {"!age", "at character 1: found \"!\", expected \"not\"."},
      {"~age", "at character 1: found \"~\", expected \"not\"."},
      {"age => 1", "at character 5: found \"=>\", expected \">=\"."},
      {"age =< 1", "at character 5: found \"=<\", expected \"<=\"."},
      {"age \xE2\x89\xA4 1", "at character 5: found \"\xE2\x89\xA4\", expected \"<=\"."},
      {"age \xE2\x89\xA5 1", "at character 5: found \"\xE2\x89\xA5\", expected \">=\"."},
      {"age \xE2\x89\xA0 1", "at character 5: found \"\xE2\x89\xA0\", expected \"<>\"."},
      {"age ~= 1", "at character 5: found \"~=\", expected \"<>\"."},
      {"age \xE2\x88\x92 1", "at character 5: found \"\xE2\x88\x92\", expected \"-\"."},
      {"age \xE2\x80\x93 1", "at character 5: found \"\xE2\x80\x93\", expected \"-\"."},
      {"age \xE2\x80\x94 1", "at character 5: found \"\xE2\x80\x94\", expected \"-\"."},
      {"age \xC3\x97 2", "at character 5: found \"\xC3\x97\", expected \"*\"."},
      {"age \xC2\xB7 2", "at character 5: found \"\xC2\xB7\", expected \"*\"."},
      {"age \xC3\xB7 2", "at character 5: found \"\xC3\xB7\", expected \"/\"."},
      {"age\xC2\xB2", "at character 4: found \"\xC2\xB2\", expected \"^2\"."},
      {"age\xC2\xB3", "at character 4: found \"\xC2\xB3\", expected \"^3\"."},
      {"\xC2\xAC"
       "age",
       "at character 1: found \"\xC2\xAC\", expected \"not\"."},
      {"\xE2\x80\x9C"
       "age",
       "at character 1: found \"\xE2\x80\x9C\", expected \"\"\"."},
      {"\xE2\x80\x98"
       "age",
       "at character 1: found \"\xE2\x80\x98\", expected \"'\"."},
  });
}

TEST(FormulaMessages, ExplainNumbersAndQuotes) {
  ExpectMessages({
      {"2age", "at character 1: \"2age\" is neither a number nor a variable. To multiply, write 2 * age."},
      {"1.5x", "at character 1: \"1.5x\" is neither a number nor a variable. To multiply, write 1.5 * x."},
      {"1+.5x", "at character 3: \".5x\" is neither a number nor a variable. To multiply, write .5 * x."},
      {"1.2.3", "at character 1: \"1.2.3\" is neither a number nor a variable."},
      {"1..2", "at character 1: \"1..2\" is neither a number nor a variable."},
      {"1e-3x", "at character 1: \"1e-3x\" is neither a number nor a variable. To multiply, write 1e-3 * x."},
      {"2e", "at character 1: \"2e\" is neither a number nor a variable. To multiply, write 2 * e."},
      {"2log(age)", "at character 1: \"2log\" is neither a number nor a variable. To multiply, write 2 * log."},
      {"1+1e999", "at character 3: 1e999 is beyond the range of numbers, which is about 1e-308 to 1e308."},
      {"1e-999", "at character 1: 1e-999 is beyond the range of numbers, which is about 1e-308 to 1e308."},
      {"age = \"test", "at character 7: the quote \" is not closed."},
      {"age = 'it''s", "at character 7: the quote ' is not closed."},
      {"1+\"\"", "at character 3: there is nothing between the quotes, expected a name or a text."},
      {"\xC3\xA4+\xFF", "at character 3: a byte that is not UTF-8 text."},
      {"age\xC3", "at character 4: a byte that is not UTF-8 text."},
      {"\xC3\xA4 +", "at character 4: found the end of the formula, expected a number, a name, a function or \"(\"."},
  });
}

TEST(FormulaMessages, OfferNamesForUnknownOnes) {
  ExpectMessages({
      {"agee > 1", "at character 1: no variable \"agee\". Closest: \"age\", \"arm\", \"Dose\"."},
      {"1 + 'ph ecog'", "at character 5: no variable \"ph ecog\". Closest: \"ph.ecog\", \"age\", \"Dose\"."},
      {"1+v8", "at character 3: no variable \"v8\". The variables are numbered from 1 to 7."},
      {"V0", "at character 1: no variable \"V0\". The variables are numbered from 1 to 7."},
      {"v99999999999999999999",
       "at character 1: no variable \"v99999999999999999999\". The variables are numbered from 1 to 7."},
      {"#8", "at character 1: no variable \"#8\". The variables are numbered from 1 to 7."},
      {"#", "at character 1: no variable \"#\". The variables are numbered from 1 to 7."},
      {"#age", "at character 1: no variable \"#age\". The variables are numbered from 1 to 7."},
      {"1+SITE",
       "at character 3: \"SITE\" may be \"Site\" (#6) or \"site\" (#7). Write the name in exactly its own case, or "
       "the number with its sign #."},
      {"'SITE'",
       "at character 1: \"SITE\" may be \"Site\" (#6) or \"site\" (#7). Write the name in exactly its own case, or "
       "the number with its sign #."},
      {"age*T_", "at character 5: \"T_\" is the time, which only the formula of a time-dependent covariate has."},
      {"t_", "at character 1: \"t_\" is the time, which only the formula of a time-dependent covariate has."},
      {"lgo(age)", "at character 1: no function \"lgo\". Closest: \"log\", \"ln\"."},
      {"1+Sqr (age)", "at character 3: no function \"Sqr\". Closest: \"sqrt\", \"sin\"."},
      {"age(1)", "at character 1: \"age\" is a variable, not a function. To multiply, put * before the parenthesis."},
      {"1+log", "at character 3: \"log\" is a function: write log(x)."},
      {"If", "at character 1: \"If\" is a function: write if(condition, a, b)."},
      {"max*2", "at character 1: \"max\" is a function: write max(a, b)."},
  });
  EXPECT_EQ(Refusal("v1", Names({})), "at character 1: no variable \"v1\". There are no variables.");
  EXPECT_EQ(Refusal("age", Names({})), "at character 1: no variable \"age\".");
}

TEST(FormulaMessages, CountArguments) {
  ExpectMessages({
      {"1+log()", "at character 3: log(x) takes 1 argument, 0 given."},
      {"log(1, 2)", "at character 1: log(x) takes 1 argument, 2 given."},
      {"max(1)", "at character 1: max(a, b) takes 2 arguments or more, 1 given."},
      {"min()", "at character 1: min(a, b) takes 2 arguments or more, 0 given."},
      {"if(age, 1)", "at character 1: if(condition, a, b) takes 3 arguments, 2 given."},
      {"if(age, 1, 2, 3)", "at character 1: if(condition, a, b) takes 3 arguments, 4 given."},
      {"round(age, 2)", "at character 1: round(x) takes 1 argument, 2 given."},
  });
}

TEST(FormulaMessages, ShortenWhatIsLong) {
  const std::string name(50, 'x');
  EXPECT_EQ(Refusal(name, Names({"age"})),
            "at character 1: no variable \"" + std::string(40, 'x') + "...\". Closest: \"age\".");
  // No name is offered for what is no misspelling.
  EXPECT_EQ(Refusal(std::string(5000, 'x'), Names({"age"})),
            "at character 1: no variable \"" + std::string(40, 'x') + "...\".");
  // A cut falls between characters, and control characters do not reach a terminal.
  std::string umlauts;
  for (int i = 0; i < 30; ++i) umlauts += "\xC3\xA4";
  EXPECT_EQ(Refusal("x" + umlauts, Names({})), "at character 1: no variable \"x" + umlauts.substr(0, 38) + "...\".");
  EXPECT_EQ(Refusal("'a\nb\x1B[1m'", Names({})), "at character 1: no variable \"a b\xEF\xBF\xBD[1m\".");
}

TEST(FormulaError, KeepsItsParts) {
  try {
    CompileFormula("\xC3\xA4\xC3\xB6 * agee", Names({"\xC3\xA4\xC3\xB6", "age"}));
    FAIL() << "compiled";
  } catch (const FormulaError& error) {
    EXPECT_EQ(error.Position(), 7U);
    EXPECT_EQ(error.Character(), 6U);
    EXPECT_EQ(error.Fault().Found, "\"agee\"");
    EXPECT_EQ(error.Fault().Expected, "");
    EXPECT_EQ(error.Fault().Nearest, (std::vector<std::string>{"age", "\xC3\xA4\xC3\xB6"}));
  }
  try {
    CompileFormula("(1", Names({}));
    FAIL() << "compiled";
  } catch (const FormulaError& error) {
    EXPECT_EQ(error.Position(), 2U);
    EXPECT_EQ(error.Fault().Found, "the end of the formula");
    EXPECT_EQ(error.Fault().Expected, "an operator or \")\" for the \"(\" at character 1");
  }
}

}  // namespace
}  // namespace orv
