#include "standalone/tables/DelimitedWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <memory>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "data/AlmostEqual.h"
#include "standalone/tables/CellText.h"
#include "standalone/tables/IsoDate.h"

namespace orv {
namespace {

constexpr int kCasesPerCheckpoint = 4096;
constexpr std::size_t kFlushedAt = std::size_t{256} * 1024;

// Quotes stand around what would be split or lose its blanks, and around the other delimiters, which would be taken for
// the one of the file if they were frequent among the names.
std::string Quoted(std::string_view text) {
  const bool isPlain = text.find_first_of(",;\t\"\r\n") == std::string_view::npos && TrimBlanks(text) == text;
  if (isPlain) return std::string(text);
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

// How the values of one variable are written.
struct ColumnForm {
  enum class Kind : std::uint8_t { Numbers, Texts, Dates };
  Kind Shown = Kind::Numbers;
  std::vector<std::string> Texts;  // one a label, as it is written
};

const ValueLabel* FindLabel(const TableVariable& variable, double value) {
  const auto found = std::lower_bound(variable.Labels.begin(), variable.Labels.end(), value,
                                      [](const ValueLabel& label, double code) { return label.Code < code; });
  return found == variable.Labels.end() || found->Code != value ? nullptr : &*found;
}

template <typename Test>
bool HoldsForValidValues(const TableVariable& variable, Test test) {
  return std::all_of(variable.Values.begin(), variable.Values.end(),
                     [&](double value) { return AlmostEqual(value, variable.MissingCode) || test(value); });
}

// Why the labels of a variable cannot stand for its values; empty when they can.
std::string_view LabelsUnfit(const TableVariable& variable) {
  std::set<std::string_view> texts;
  for (const ValueLabel& label : variable.Labels) {
    const std::string_view text = TrimBlanks(label.Text);
    if (IsMissingText(text)) return "one would be read as a missing value";
    if (!texts.insert(text).second) return "two of them are the same";
  }
  const bool allLabelled =
      HoldsForValidValues(variable, [&](double value) { return FindLabel(variable, value) != nullptr; });
  return allLabelled ? "" : "not every value has one";
}

void ChooseTexts(const TableVariable& variable, ColumnForm& form, std::vector<std::string>& notes) {
  const std::string_view unfit = LabelsUnfit(variable);
  if (!unfit.empty()) {
    notes.push_back(fmt::format("{} is written as numbers, without its value labels: {}.", variable.Name, unfit));
    return;
  }
  form.Shown = ColumnForm::Kind::Texts;
  for (const ValueLabel& label : variable.Labels) form.Texts.push_back(Quoted(label.Text));
}

void ChooseDates(const TableVariable& variable, ColumnForm& form, std::vector<std::string>& notes) {
  if (!HoldsForValidValues(variable, [](double value) { return !IsoDate(value).empty(); })) {
    notes.push_back(
        fmt::format("{} is written as day numbers: a date is outside the years 0000 to 9999.", variable.Name));
    return;
  }
  form.Shown = ColumnForm::Kind::Dates;
  if (!HoldsForValidValues(variable, [](double value) { return value == std::floor(value); }))
    notes.push_back(fmt::format("{} is written without its times of day.", variable.Name));
}

ColumnForm ChooseForm(const TableVariable& variable, std::vector<std::string>& notes) {
  ColumnForm form;
  if (variable.Type == VariableType::Date) {
    ChooseDates(variable, form, notes);
  } else if (!variable.Labels.empty()) {
    ChooseTexts(variable, form, notes);
  }
  return form;
}

class OutputFile {
 public:
  explicit OutputFile(const std::string& path) : m_file(std::fopen(path.c_str(), "wb")) { Check(m_file != nullptr); }

  fmt::memory_buffer& Buffer() { return m_buffer; }
  void Put(std::string_view text) { m_buffer.append(text.data(), text.data() + text.size()); }
  void FlushWhenLarge() {
    if (m_buffer.size() >= kFlushedAt) Flush();
  }
  void Close() {
    Flush();
    Check(std::fclose(m_file.release()) == 0);
  }

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  static void Check(bool done) {
    if (!done) throw std::system_error(errno, std::generic_category());
  }
  void Flush() {
    Check(std::fwrite(m_buffer.data(), 1, m_buffer.size(), m_file.get()) == m_buffer.size());
    m_buffer.clear();
  }

  std::unique_ptr<std::FILE, Closer> m_file;
  fmt::memory_buffer m_buffer;
};

void PutValue(OutputFile& out, const TableVariable& variable, const ColumnForm& form, double value) {
  switch (form.Shown) {
    case ColumnForm::Kind::Texts:
      return out.Put(form.Texts[static_cast<std::size_t>(FindLabel(variable, value) - variable.Labels.data())]);
    case ColumnForm::Kind::Dates:
      return out.Put(IsoDate(value));
    case ColumnForm::Kind::Numbers:
      break;
  }
  fmt::format_to(std::back_inserter(out.Buffer()), "{}", value);
}

void PutNames(OutputFile& out, const MemoryTable& table) {
  for (int v = 1; v <= table.VariableCount(); ++v) {
    if (v > 1) out.Put(",");
    out.Put(Quoted(table.Variable(v).Name));
  }
  out.Put("\n");
}

}  // namespace

std::vector<std::string> WriteDelimited(const MemoryTable& table,
                                        const std::string& file,
                                        const std::function<void()>& checkpoint) {
  std::vector<std::string> notes;
  std::vector<ColumnForm> forms;
  for (int v = 1; v <= table.VariableCount(); ++v) forms.push_back(ChooseForm(table.Variable(v), notes));
  if (table.HasCaseNames()) notes.emplace_back("the names of the cases are left out.");

  // A line without anything would be skipped by a reader.
  const std::string_view missing = table.VariableCount() == 1 ? "NA" : "";
  OutputFile out(file);
  PutNames(out, table);
  for (int c = 1; c <= table.CaseCount(); ++c) {
    if (checkpoint && c % kCasesPerCheckpoint == 0) checkpoint();
    for (int v = 1; v <= table.VariableCount(); ++v) {
      if (v > 1) out.Put(",");
      if (table.IsMissing(v, c)) {
        out.Put(missing);
      } else {
        PutValue(out, table.Variable(v), forms[static_cast<std::size_t>(v) - 1], table.Value(v, c));
      }
    }
    out.Put("\n");
    out.FlushWhenLarge();
  }
  out.Close();
  return notes;
}

}  // namespace orv
