#include "standalone/tables/StatisticsSource.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {
namespace {

constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
constexpr std::uint64_t kBytesPerQuery = std::uint64_t{256} * 1024;
// Sound files are read two or three times over at most.
constexpr std::uint64_t kMostReadings = 16;
constexpr std::uint64_t kAlwaysServed = std::uint64_t{1} << 20U;

StatisticsSource& Self(void* source) {
  return *static_cast<StatisticsSource*>(source);
}

int Whence(readstat_io_flags_t whence) {
  return whence == READSTAT_SEEK_SET ? SEEK_SET : whence == READSTAT_SEEK_CUR ? SEEK_CUR : SEEK_END;
}

}  // namespace

StatisticsSource::StatisticsSource(const std::string& path, ReadMeter& meter) : m_path(path), m_meter(meter) {
  m_file.reset(std::fopen(path.c_str(), "rb"));
  if (!m_file) throw TableError(CannotOpenMessage(path, errno));
  // Parsers ask for a few bytes at a time.
  std::setvbuf(m_file.get(), nullptr, _IOFBF, kBufferSize);
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  m_total = error ? 0 : size;
}

void StatisticsSource::Attach(readstat_parser_t& parser) {
  readstat_set_open_handler(&parser, [](const char*, void*) { return 0; });
  readstat_set_close_handler(&parser, [](void*) { return 0; });
  readstat_set_seek_handler(&parser, [](readstat_off_t offset, readstat_io_flags_t whence, void* source) {
    return Self(source).Seek(offset, whence);
  });
  readstat_set_read_handler(&parser,
                            [](void* buffer, size_t size, void* source) { return Self(source).Read(buffer, size); });
  readstat_set_update_handler(&parser, [](long, readstat_progress_handler, void*, void*) { return READSTAT_OK; });
  readstat_set_io_ctx(&parser, this);
}

void StatisticsSource::ThrowFailure() const {
  if (m_failure) std::rethrow_exception(m_failure);
}

// No exception may pass through the parser, which is C: it is kept, and the parser sees a failing read.
ssize_t StatisticsSource::Read(void* buffer, std::size_t size) {
  if (m_failure || m_served > kAlwaysServed + kMostReadings * m_total) return -1;
  try {
    if (m_served >= m_nextQuery) {
      m_nextQuery = m_served + kBytesPerQuery;
      m_meter.Advance(std::min(m_place, m_total), m_total);
    }
    errno = 0;
    const std::size_t read = std::fread(buffer, 1, size, m_file.get());
    if (std::ferror(m_file.get()) != 0) throw TableError(ReadFailedMessage(m_path, errno));
    m_place += read;
    m_served += size;
    return static_cast<ssize_t>(read);
  } catch (...) {
    m_failure = std::current_exception();
    return -1;
  }
}

readstat_off_t StatisticsSource::Seek(readstat_off_t offset, readstat_io_flags_t whence) {
  if (fseeko(m_file.get(), offset, Whence(whence)) != 0) return -1;
  const readstat_off_t place = ftello(m_file.get());
  m_place = place < 0 ? 0 : static_cast<std::uint64_t>(place);
  return place;
}

}  // namespace orv
