// DelimitedRecords: the records and fields of delimited text, with their lines.
//
// A record is a line, or several when a quoted field holds line breaks. Fields are separated by one comma, tab or
// semicolon. A field may stand in double quotes; inside them a quote is written twice. Blanks before and after a field
// do not count. Lines end in LF, CRLF or CR. Lines that hold nothing but blanks are skipped, wherever they stand. The
// text is UTF-8; a byte-order mark at its start is skipped.
//
// Parsed line by line: so the line of every field is known without a look at each byte. A line without quotes that is a
// record of its own is split at its delimiters; any other is parsed by libcsv in strict mode, which on such a line
// gives the same fields.
#pragma once

#include <csv.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "standalone/tables/ByteSource.h"
#include "standalone/tables/ReadMeter.h"
#include "standalone/tables/TableMessages.h"
#include "standalone/tables/TextCheck.h"

namespace orv {

// Takes the fields of a file, record by record. Whatever it throws ends the reading and reaches the caller.
class RecordSink {
 public:
  virtual ~RecordSink() = default;
  // The next field. `text` ends with the call; blanks around it are gone unless it was quoted. `line` counts from 1; it
  // is the line on which the field ends.
  virtual void Field(std::string_view text, std::uint64_t line) = 0;
  virtual void EndRecord() = 0;
  // Between two blocks, of a source whose size is known: the share of its bytes that has been read, above 0 and
  // below 1.
  virtual void HasRead(double /*share*/) {}
  // The name of a column for messages, from 1; empty when there is none.
  virtual std::string ColumnName(std::uint64_t column) const = 0;
};

class DelimitedRecords {
 public:
  // `name` is the file's name in messages. `preferTab`: a tab in the first line is the delimiter, whatever else stands
  // there. Otherwise the most frequent of comma, tab and semicolon in the first line is, the first named of equally
  // frequent ones; without any of them the file has one column.
  DelimitedRecords(ByteSource& source, std::string name, bool preferTab, ReadMeter& meter);
  ~DelimitedRecords();
  DelimitedRecords(const DelimitedRecords&) = delete;
  DelimitedRecords& operator=(const DelimitedRecords&) = delete;

  // Reads the whole source, from its first byte, into `sink`. Throws TableError for text that cannot be split into
  // fields, TableReadCancelled, and what the sink throws. Once only.
  void ReadInto(RecordSink& sink);
  // Known when the first field arrives.
  char Delimiter() const { return m_delimiter; }

 private:
  void Start(std::string_view firstBlock);
  void ReadBlock(std::string_view block);
  void SplitLine(std::string_view bytes);
  void ParseLine(std::string_view bytes);
  void Finish();
  TextPlace OpenField() const;
  [[noreturn]] void ThrowParseError() const;
  [[noreturn]] void ThrowTooLong() const;
  [[noreturn]] void ThrowUnclosedQuote() const;
  [[noreturn]] void ThrowFault(TextFault fault) const;

  static void OnField(void* text, std::size_t size, void* self);
  static void OnRecord(int terminator, void* self);
  template <typename Call>
  void Guard(Call call);

  ByteSource& m_source;
  std::string m_name;
  bool m_preferTab;
  ReadMeter& m_meter;
  csv_parser m_parser{};
  RecordSink* m_sink = nullptr;
  TextCheck m_check;
  std::exception_ptr m_failure;        // what the sink threw
  std::uint64_t m_line = 1;            // of the bytes that are parsed now
  std::uint64_t m_fields = 0;          // complete fields of the current record
  bool m_atRecordStart = true;         // nothing of the next record has been given to libcsv
  bool m_afterCarriageReturn = false;  // the last block ended in CR: an LF that follows belongs to that line
  char m_delimiter = ',';
};

}  // namespace orv
