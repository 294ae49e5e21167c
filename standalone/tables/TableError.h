// What reading a table throws.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace orv {

// A table cannot be read. what() is the whole message for the person at the terminal: it names the file, the place in
// it and the way out. The texts stand in TableMessages.h.
class TableError : public std::runtime_error {
 public:
  explicit TableError(const std::string& message) : std::runtime_error(message) {}
};

// The user cancelled while a table was read. Not a TableError: nothing is wrong with the file.
class TableReadCancelled : public std::exception {
 public:
  const char* what() const noexcept override { return "Reading was cancelled."; }
};

}  // namespace orv
