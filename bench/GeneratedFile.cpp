#include "GeneratedFile.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <vector>

#include "FixedSeedNumbers.h"
#include "standalone/tables/SampleFiles.h"
#include "standalone/tables/TableWriters.h"

namespace orv::bench {

namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;
constexpr const char* kTexts[] = {"control", "drug A", "drug B", "late, moved"};  // in the order of their bytes
constexpr int kEmptyOneIn = 50;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

[[noreturn]] void ThrowSystemError(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

enum class ColumnKind { Whole, Decimals, Full, Digits, Text, Date };

ColumnKind KindOfColumn(FileKind file, int column) {
  if (file == FileKind::Digits) return ColumnKind::Digits;
  if (file == FileKind::Mixed && column >= 9) return column == 11 ? ColumnKind::Date : ColumnKind::Text;
  return column < 4 ? ColumnKind::Whole : column < 8 ? ColumnKind::Decimals : ColumnKind::Full;
}

// The cases one after the other: the text of each, and the values that a reader must find in it.
class CaseMaker {
 public:
  explicit CaseMaker(FileKind kind) : m_kind(kind) {}

  // Appends the line of the next case and sets `values`.
  void Next(std::string& line, std::array<double, kFileColumns>& values) {
    for (int column = 0; column < kFileColumns; ++column) {
      if (column > 0) line += ',';
      const bool isEmpty = m_kind == FileKind::Mixed && column > 0 && m_numbers.Below(kEmptyOneIn) == 0;
      values[static_cast<std::size_t>(column)] = isEmpty ? kMissingCode : Cell(KindOfColumn(m_kind, column), line);
    }
    line += '\n';
  }

 private:
  double Cell(ColumnKind kind, std::string& line) {
    const auto out = std::back_inserter(line);
    switch (kind) {
      case ColumnKind::Whole: {
        const int number = m_numbers.Below(100);
        fmt::format_to(out, "{}", number);
        return number;
      }
      case ColumnKind::Decimals: {
        // A quotient of two exact numbers is the double nearest to the decimal, as a reader must find it.
        const int thousandths = m_numbers.Below(20'000) - 10'000;
        fmt::format_to(out, "{:.3f}", thousandths / 1000.0);
        return thousandths / 1000.0;
      }
      case ColumnKind::Full: {
        const double number = m_numbers.Normal();
        fmt::format_to(out, "{}", number);
        return number;
      }
      case ColumnKind::Digits: {
        // As many digits as lead back to the same double.
        const double number = m_numbers.Normal();
        fmt::format_to(out, "{:.17g}", number);
        return number;
      }
      case ColumnKind::Text: {
        const int code = m_numbers.Below(static_cast<int>(std::size(kTexts)));
        const char* quote = std::string_view(kTexts[code]).find(',') != std::string_view::npos ? "\"" : "";
        fmt::format_to(out, "{0}{1}{0}", quote, kTexts[code]);
        return code + 1.0;
      }
      case ColumnKind::Date:
        break;
    }
    const int day = m_numbers.Below(20'000);
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
    fmt::format_to(out, "{:04}-{:02}-{:02}", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                   static_cast<unsigned>(date.day()));
    return day;
  }

  FileKind m_kind;
  FixedSeedNumbers m_numbers;
};

bool IsTyped(const TableVariable& variable, ColumnKind kind) {
  switch (kind) {
    case ColumnKind::Text:
      return variable.Type == VariableType::Text &&
             std::equal(variable.Labels.begin(), variable.Labels.end(), std::begin(kTexts), std::end(kTexts),
                        [](const ValueLabel& label, const char* text) { return label.Text == text; });
    case ColumnKind::Date:
      return variable.Type == VariableType::Date;
    default:
      return variable.Type == VariableType::Number;
  }
}

}  // namespace

GeneratedFile::GeneratedFile(FileKind kind, int cases) : m_kind(kind), m_cases(cases) {
  std::string path = (std::filesystem::temp_directory_path() / "orvcox_bench_XXXXXX.csv").string();
  const int descriptor = mkstemps(path.data(), 4);
  if (descriptor < 0) ThrowSystemError(path);
  m_path = path;
  const OwnedFile file(fdopen(descriptor, "wb"));
  if (!file) ThrowSystemError(path);

  std::string text;
  for (int column = 1; column <= kFileColumns; ++column) text += fmt::format("{}v{}", column > 1 ? "," : "", column);
  text += '\n';
  CaseMaker maker(kind);
  std::array<double, kFileColumns> values{};
  for (int row = 0; row < cases; ++row) {
    maker.Next(text, values);
    if (text.size() < kBlockSize && row + 1 < cases) continue;
    if (std::fwrite(text.data(), 1, text.size(), file.get()) != text.size()) ThrowSystemError(path);
    m_bytes += text.size();
    text.clear();
  }
  if (std::fflush(file.get()) != 0) ThrowSystemError(path);
}

GeneratedFile::~GeneratedFile() {
  std::error_code ignored;
  std::filesystem::remove(m_path, ignored);
}

void GeneratedFile::Become(const std::string& ending, const MemoryTable& table) {
  const std::string path = std::filesystem::path(m_path).replace_extension(ending).string();
  IsWritableEnding(ending) ? static_cast<void>(WriteTable(table, path)) : testing::WriteStatisticsFile(table, path);
  std::filesystem::remove(m_path);
  m_path = path;
  m_bytes = std::filesystem::file_size(path);
}

bool GeneratedFile::IsReadAs(const MemoryTable& table) const {
  if (table.VariableCount() != kFileColumns || table.CaseCount() != m_cases) return false;
  for (int column = 0; column < kFileColumns; ++column) {
    if (!IsTyped(table.Variable(column + 1), KindOfColumn(m_kind, column))) return false;
  }
  CaseMaker maker(m_kind);
  std::string line;
  std::array<double, kFileColumns> values{};
  for (int row = 1; row <= m_cases; ++row) {
    line.clear();
    maker.Next(line, values);
    for (int column = 1; column <= kFileColumns; ++column) {
      if (table.Value(column, row) != values[static_cast<std::size_t>(column) - 1]) return false;
    }
  }
  return true;
}

std::uint64_t GeneratedFile::CountLines() const {
  const OwnedFile file(std::fopen(m_path.c_str(), "rb"));
  if (!file) ThrowSystemError(m_path);
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  std::vector<char> block(kBlockSize);
  std::uint64_t lines = 0;
  for (std::size_t size = 0; (size = std::fread(block.data(), 1, block.size(), file.get())) > 0;) {
    lines +=
        static_cast<std::uint64_t>(std::count(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(size), '\n'));
  }
  return lines;
}

}  // namespace orv::bench
