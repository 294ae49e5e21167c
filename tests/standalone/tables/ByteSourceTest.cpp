#include <gtest/gtest.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "standalone/tables/ByteSource.h"
#include "standalone/tables/TableError.h"

namespace orv {
namespace {

// What a stream does on each read, in order: an error number, or 0 to give the next bytes.
struct Script {
  std::vector<int> Steps;
  std::string Text;
  std::size_t Step = 0;
  std::size_t Place = 0;
};

ssize_t ReadByScript(void* cookie, char* buffer, size_t size) {
  auto& script = *static_cast<Script*>(cookie);
  const int reason = script.Step < script.Steps.size() ? script.Steps[script.Step++] : 0;
  if (reason != 0) {
    errno = reason;
    return -1;
  }
  const std::size_t part = std::min({size, script.Text.size() - script.Place, std::size_t{3}});
  script.Text.copy(buffer, part, script.Place);
  script.Place += part;
  return static_cast<ssize_t>(part);
}

std::FILE* Open(Script& script) {
  std::FILE* stream = fopencookie(&script, "r", {ReadByScript, nullptr, nullptr, nullptr});
  std::setvbuf(stream, nullptr, _IONBF, 0);
  return stream;
}

std::string ReadAll(ByteSource& source, std::size_t blockSize) {
  std::string text;
  std::vector<char> block(blockSize);
  while (const std::size_t size = source.Read(block.data(), block.size())) {
    text.append(block.data(), size);
    if (size < blockSize) break;
  }
  return text;
}

TEST(HoldStream, GivesTheSameBytesAgain) {
  Script script{{}, "time,status\n5,1\n"};
  std::FILE* stream = Open(script);
  const auto source = HoldStream(stream, "standard input");
  for (std::size_t blockSize = 1; blockSize < 20; ++blockSize) {
    EXPECT_EQ(ReadAll(*source, blockSize), script.Text) << blockSize;
    EXPECT_EQ(source->TotalBytes(), script.Text.size());
    source->Rewind();
  }
  std::fclose(stream);
}

TEST(HoldStream, GoesOnAfterASignal) {
  Script script{{0, EINTR, 0, EINTR, EINTR, 0}, "time,status\n5,1\n"};
  std::FILE* stream = Open(script);
  int interruptions = 0;
  const auto source = HoldStream(stream, "standard input", [&interruptions] { ++interruptions; });
  EXPECT_EQ(ReadAll(*source, 100), script.Text);
  EXPECT_EQ(interruptions, 3);
  std::fclose(stream);
}

TEST(HoldStream, StopsAtASignalWhenTheCallbackThrows) {
  Script script{{0, EINTR}, "time,status\n5,1\n"};
  std::FILE* stream = Open(script);
  const auto source = HoldStream(stream, "standard input", [] { throw TableReadCancelled(); });
  char buffer[100];
  EXPECT_THROW(source->Read(buffer, sizeof buffer), TableReadCancelled);
  std::fclose(stream);
}

TEST(HoldStream, NamesTheReasonOfAFailure) {
  Script script{{0, EIO}, "time,status\n5,1\n"};
  std::FILE* stream = Open(script);
  const auto source = HoldStream(stream, "standard input");
  char buffer[100];
  try {
    source->Read(buffer, sizeof buffer);
    ADD_FAILURE() << "the failure went unnoticed";
  } catch (const TableError& error) {
    EXPECT_STREQ(
        error.what(),
        "standard input: reading failed: Input/output error. Check the disk or the connection, or read a copy.");
  }
  std::fclose(stream);
}

TEST(OpenFile, RefusesFoldersAndMissingFiles) {
  const std::string folder = std::filesystem::temp_directory_path();
  const std::string missing = folder + "/no-such-table.csv";
  try {
    OpenFile(folder);
    ADD_FAILURE() << "a folder was opened";
  } catch (const TableError& error) {
    EXPECT_EQ(error.what(), folder + ": a folder, not a file. Name the file in it that is to be read.");
  }
  try {
    OpenFile(missing);
    ADD_FAILURE() << "a missing file was opened";
  } catch (const TableError& error) {
    EXPECT_EQ(error.what(), missing + ": no such file. Check the name and the folder.");
  }
}

}  // namespace
}  // namespace orv
