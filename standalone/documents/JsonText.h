// JsonText: writes JSON text piece by piece, laid out for a reader.
//
// It holds no tree, so a sheet of millions of cells costs its text alone. Every text comes out valid: bytes that are
// no UTF-8 as U+FFFD, numbers that JSON cannot express as null.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orv {

enum class JsonLayout {
  Lines,   // one member or element a line
  Line,    // all on one line, also what is nested in it
  Filled,  // lines of up to about 120 characters
};

class JsonText {
 public:
  void BeginObject(JsonLayout layout) { Begin('{', '}', layout); }
  void BeginArray(JsonLayout layout) { Begin('[', ']', layout); }
  // Closes the object or array opened last.
  void End();

  // Inside an object, before each value.
  void Key(std::string_view name);
  void String(std::string_view text);
  // The shortest text that reads back to the same double; null for NaN and infinities.
  void Number(double number);
  void Integer(int number);
  void Boolean(bool value);

  // The finished text with a line feed at its end. REQUIRES: everything opened is closed.
  std::string Take();

 private:
  struct Container {
    char Close;
    JsonLayout Layout;
    bool IsEmpty;
  };

  void Begin(char open, char close, JsonLayout layout);
  // Separates what comes next, `length` bytes, from what stands before it.
  void StartElement(std::size_t length);
  void Value(std::string_view text);
  void NewLine();

  std::string m_text;
  std::size_t m_lineStart = 0;  // where the last line of m_text begins
  std::vector<Container> m_open;
  bool m_afterKey = false;
};

// The shortest text that reads back to the same double, sign of zero included. REQUIRES: `number` is finite.
std::string ShortestNumberText(double number);

}  // namespace orv
