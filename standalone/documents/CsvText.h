// CsvText: fields of comma-separated values after RFC 4180, with a line feed behind each record.
#pragma once

#include <string>
#include <string_view>

namespace orv {

class CsvText {
 public:
  // A field that holds a comma, a quote or a line end stands in quotes. Bytes that are no UTF-8 become U+FFFD, and so
  // does a zero byte; all else stays as it is.
  void Text(std::string_view text);
  // The shortest text that reads back to the same double; "inf" or "-inf"; an empty field for NaN.
  void Number(double number);
  void EndRecord();
  std::string Take() { return std::move(m_text); }

 private:
  void BeginField();

  std::string m_text;
  bool m_isFirst = true;
};

}  // namespace orv
