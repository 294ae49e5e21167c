#include "standalone/tables/DelimitedRecords.h"

#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "standalone/tables/ColumnBuilder.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {
namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;
// A value beyond this is a quote that was never closed, or no table at all: the rest of the file need not be gathered
// to find that out.
constexpr std::size_t kLongestValue = std::size_t{1} << 20;
constexpr std::size_t kFieldBufferStep = 4096;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlankBytes = " \t\r\n";

// The first line that is not blank, up to its end outside quotes or as far as the block goes.
std::string_view FirstRecord(std::string_view block) {
  const std::size_t begin = block.find_first_not_of(kBlankBytes);
  if (begin == std::string_view::npos) return {};
  bool quoted = false;
  std::size_t end = begin;
  for (; end < block.size(); ++end) {
    const char c = block[end];
    if (c == '"') quoted = !quoted;
    if (!quoted && (c == '\n' || c == '\r')) break;
  }
  // Blanks before the first name may be tabs that delimit empty names.
  const std::size_t lineEnd = block.find_last_of("\r\n", begin);
  const std::size_t lineBegin = lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
  return block.substr(lineBegin, end - lineBegin);
}

std::size_t CountOutsideQuotes(std::string_view text, char wanted) {
  bool quoted = false;
  std::size_t count = 0;
  for (const char c : text) {
    if (c == '"') quoted = !quoted;
    if (!quoted && c == wanted) ++count;
  }
  return count;
}

char FindDelimiter(std::string_view firstRecord, bool preferTab) {
  const std::size_t tabs = CountOutsideQuotes(firstRecord, '\t');
  if (preferTab && tabs > 0) return '\t';
  const std::size_t commas = CountOutsideQuotes(firstRecord, ',');
  const std::size_t semicolons = CountOutsideQuotes(firstRecord, ';');
  if (commas >= tabs && commas >= semicolons) return ',';
  return tabs >= semicolons ? '\t' : ';';
}

// Cuts a block after every LF, CRLF and lone CR. Each kind of line end is looked for only once it has been passed, so a
// block is searched once whichever kind it has.
class LineCutter {
 public:
  explicit LineCutter(std::string_view block)
      : m_block(block), m_feed(block.find('\n')), m_carriage(block.find('\r')) {}

  // One past the end of the line that holds `from`, or the end of the block.
  std::size_t LineEnd(std::size_t from) {
    if (m_feed < from) m_feed = m_block.find('\n', from);
    if (m_carriage < from) m_carriage = m_block.find('\r', from);
    if (m_carriage < m_feed && m_carriage + 1 != m_feed) return m_carriage + 1;
    return m_feed == std::string_view::npos ? m_block.size() : m_feed + 1;
  }

 private:
  std::string_view m_block;
  std::size_t m_feed;  // the next of its kind, npos when there is no more
  std::size_t m_carriage;
};

bool EndsLine(std::string_view bytes) {
  return bytes.back() == '\n' || bytes.back() == '\r';
}

}  // namespace

DelimitedRecords::DelimitedRecords(ByteSource& source, std::string name, bool preferTab, ReadMeter& meter)
    : m_source(source), m_name(std::move(name)), m_preferTab(preferTab), m_meter(meter) {
  // Fails only for a null parser.
  csv_init(&m_parser, CSV_STRICT | CSV_STRICT_FINI);
  csv_set_blk_size(&m_parser, kFieldBufferStep);
}

DelimitedRecords::~DelimitedRecords() {
  csv_free(&m_parser);
}

void DelimitedRecords::ReadInto(RecordSink& sink) {
  m_sink = &sink;
  m_source.Rewind();
  m_meter.CheckCancelled();
  std::vector<char> buffer(kBlockSize);
  std::uint64_t done = 0;
  for (bool first = true;; first = false) {
    const std::size_t size = m_source.Read(buffer.data(), buffer.size());
    std::string_view block(buffer.data(), size);
    done += size;
    if (first) {
      Start(block);
      if (block.starts_with(kByteOrderMark)) block.remove_prefix(kByteOrderMark.size());
    }
    ReadBlock(block);
    if (size < buffer.size()) break;
    m_meter.Advance(done, m_source.TotalBytes());
  }
  Finish();
  m_meter.Finish(done);
}

void DelimitedRecords::Start(std::string_view firstBlock) {
  if (firstBlock.starts_with("\xFF\xFE") || firstBlock.starts_with("\xFE\xFF")) throw TableError(Utf16Message(m_name));
  if (firstBlock.starts_with(kByteOrderMark)) firstBlock.remove_prefix(kByteOrderMark.size());
  m_delimiter = FindDelimiter(FirstRecord(firstBlock), m_preferTab);
  csv_set_delim(&m_parser, static_cast<unsigned char>(m_delimiter));
}

void DelimitedRecords::ReadBlock(std::string_view block) {
  if (block.empty()) return;
  const TextCheck::Finding finding = m_check.Check(block);
  std::size_t from = 0;
  if (m_afterCarriageReturn && block.front() == '\n') {
    // The second half of a CRLF. Its line was counted at the CR.
    --m_line;
    ParseLine(block.substr(0, 1));
    ++m_line;
    from = 1;
  }
  LineCutter cutter(block);
  while (from < block.size()) {
    const std::size_t end = cutter.LineEnd(from);
    if (finding.Fault != TextFault::None && finding.Offset < end) ThrowFault(finding.Fault);
    const std::string_view bytes = block.substr(from, end - from);
    ParseLine(bytes);
    if (EndsLine(bytes)) ++m_line;
    if (m_parser.entry_pos > kLongestValue) ThrowTooLong();
    from = end;
  }
  m_afterCarriageReturn = block.back() == '\r';
}

// A line, or the part of one that a block holds.
void DelimitedRecords::ParseLine(std::string_view bytes) {
  const std::size_t parsed = csv_parse(&m_parser, bytes.data(), bytes.size(), OnField, OnRecord, this);
  if (m_failure) std::rethrow_exception(m_failure);
  if (parsed < bytes.size()) ThrowParseError();
}

void DelimitedRecords::Finish() {
  if (!m_check.AtEndOfCharacter()) ThrowFault(TextFault::NotUtf8);
  const int result = csv_fini(&m_parser, OnField, OnRecord, this);
  if (m_failure) std::rethrow_exception(m_failure);
  if (result != 0) ThrowUnclosedQuote();
}

// Where the field that is being read begins.
TextPlace DelimitedRecords::OpenField() const {
  const std::string_view read(reinterpret_cast<const char*>(m_parser.entry_buf), m_parser.entry_pos);
  const std::uint64_t column = m_fields + 1;
  return {m_name, m_line - CountLineBreaks(read), column, m_sink->ColumnName(column)};
}

void DelimitedRecords::ThrowParseError() const {
  if (m_parser.status != CSV_EPARSE) throw std::bad_alloc();
  const TextPlace begin = OpenField();
  TextPlace here = begin;
  here.Line = m_line;
  throw TableError(m_parser.quoted != 0 ? TextAfterQuoteMessage(here, begin.Line, m_delimiter)
                                        : QuoteInsideValueMessage(here));
}

void DelimitedRecords::ThrowTooLong() const {
  if (m_parser.quoted != 0) ThrowUnclosedQuote();
  throw TableError(TooLongValueMessage(OpenField()));
}

void DelimitedRecords::ThrowUnclosedQuote() const {
  throw TableError(UnclosedQuoteMessage(OpenField()));
}

void DelimitedRecords::ThrowFault(TextFault fault) const {
  throw TableError(fault == TextFault::ZeroByte ? ZeroByteMessage(m_name, m_line) : NotUtf8Message(m_name, m_line));
}

// An exception must not pass through the C code that calls back. It is kept until that returns; what the parser still
// reports from the same line is passed over.
template <typename Call>
void DelimitedRecords::Guard(Call call) {
  if (m_failure) return;
  try {
    call();
  } catch (...) {
    m_failure = std::current_exception();
  }
}

void DelimitedRecords::OnField(void* text, std::size_t size, void* self) {
  auto& records = *static_cast<DelimitedRecords*>(self);
  records.Guard([&] {
    ++records.m_fields;
    records.m_sink->Field({static_cast<const char*>(text), size}, records.m_line);
  });
}

void DelimitedRecords::OnRecord(int, void* self) {
  auto& records = *static_cast<DelimitedRecords*>(self);
  records.Guard([&] {
    records.m_fields = 0;
    records.m_sink->EndRecord();
  });
}

}  // namespace orv
