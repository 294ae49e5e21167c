#include "standalone/tables/DelimitedRecords.h"

#include <bit>
#include <cstring>
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

// The place of the next byte of one kind, for questions that go forward through a block.
class NextByte {
 public:
  NextByte(std::string_view block, char byte) : m_block(block), m_byte(byte), m_place(block.find(byte)) {}

  // The first place from `from` on, npos when there is none.
  std::size_t From(std::size_t from) {
    if (m_place < from) m_place = m_block.find(m_byte, from);
    return m_place;
  }

 private:
  std::string_view m_block;
  char m_byte;
  std::size_t m_place;
};

// Cuts a block after every LF, CRLF and lone CR. Each kind of line end is looked for only once it has been passed, so a
// block is searched once whichever kind it has.
class LineCutter {
 public:
  explicit LineCutter(std::string_view block) : m_size(block.size()), m_feeds(block, '\n'), m_carriages(block, '\r') {}

  // One past the end of the line that holds `from`, or the end of the block.
  std::size_t LineEnd(std::size_t from) {
    const std::size_t feed = m_feeds.From(from);
    const std::size_t carriage = m_carriages.From(from);
    if (carriage < feed && carriage + 1 != feed) return carriage + 1;
    return feed == std::string_view::npos ? m_size : feed + 1;
  }

 private:
  std::size_t m_size;
  NextByte m_feeds;
  NextByte m_carriages;
};

// True in the lowest byte, and perhaps in higher ones, whose eight bits are those of the byte that `pattern` repeats.
std::uint64_t BytesEqual(std::uint64_t bytes, std::uint64_t pattern) {
  constexpr std::uint64_t kTopBits = 0x8080808080808080U;
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  const std::uint64_t difference = bytes ^ pattern;
  return (difference - kOnes) & ~difference & kTopBits;
}

// The delimiter at or behind `from`, or `end`. Fields are short: eight bytes at a time are quicker than a call of
// memchr.
const char* FindDelimiterFrom(const char* from, const char* end, char delimiter) {
  if constexpr (std::endian::native == std::endian::little) {
    const std::uint64_t pattern = 0x0101010101010101U * static_cast<unsigned char>(delimiter);
    std::uint64_t bytes = 0;
    for (; end - from >= static_cast<std::ptrdiff_t>(sizeof bytes); from += sizeof bytes) {
      std::memcpy(&bytes, from, sizeof bytes);
      const std::uint64_t found = BytesEqual(bytes, pattern);
      if (found != 0) return from + std::countr_zero(found) / 8;
    }
  }
  while (from < end && *from != delimiter) ++from;
  return from;
}

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
    const std::uint64_t total = m_source.TotalBytes();
    m_meter.Advance(done, total);
    if (done < total) sink.HasRead(static_cast<double>(done) / static_cast<double>(total));
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
    if (!m_atRecordStart) ParseLine(block.substr(0, 1));
    ++m_line;
    from = 1;
  }
  LineCutter cutter(block);
  NextByte quotes(block, '"');
  while (from < block.size()) {
    const std::size_t end = cutter.LineEnd(from);
    if (finding.Fault != TextFault::None && finding.Offset < end) ThrowFault(finding.Fault);
    const std::string_view bytes = block.substr(from, end - from);
    const bool isRecord = m_atRecordStart && EndsLine(bytes) && quotes.From(from) >= end;
    isRecord ? SplitLine(bytes) : ParseLine(bytes);
    if (EndsLine(bytes)) ++m_line;
    if (m_parser.entry_pos > kLongestValue) ThrowTooLong();
    from = end;
  }
  m_afterCarriageReturn = block.back() == '\r';
}

// A whole line without quotes. Nothing but a quote would keep a delimiter from ending a field, and nothing but blanks
// around a field is no part of it.
void DelimitedRecords::SplitLine(std::string_view bytes) {
  const char* from = bytes.data();
  const char* end = from + bytes.size();
  while (end > from && (end[-1] == '\n' || end[-1] == '\r')) --end;
  const auto isBlank = [this](char c) { return (c == ' ' || c == '\t') && c != m_delimiter; };
  while (from < end && isBlank(*from)) ++from;
  if (from == end) return;  // blank lines are skipped
  while (true) {
    const char* const fieldEnd = FindDelimiterFrom(from, end, m_delimiter);
    const char* textEnd = fieldEnd;
    while (from < textEnd && isBlank(*from)) ++from;
    while (textEnd > from && isBlank(textEnd[-1])) --textEnd;
    m_sink->Field({from, static_cast<std::size_t>(textEnd - from)}, m_line);
    if (fieldEnd == end) break;
    from = fieldEnd + 1;
  }
  m_sink->EndRecord();
}

// A line, or the part of one that a block holds.
void DelimitedRecords::ParseLine(std::string_view bytes) {
  m_atRecordStart = false;
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
    records.m_atRecordStart = true;
    records.m_sink->EndRecord();
  });
}

}  // namespace orv
