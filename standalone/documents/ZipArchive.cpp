// Library: libzip. It takes the parts from callbacks, and keeps the archive in a buffer of its own.
#include "standalone/documents/ZipArchive.h"

#include <fmt/format.h>
#include <zip.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <memory>
#include <new>
#include <utility>

#include "standalone/documents/OutputMessages.h"

namespace orv {
namespace {

constexpr zip_uint16_t MidnightInDosTime = 0;
constexpr zip_uint16_t FirstDayInDosTime = (1U << 5U) | 1U;  // 1980-01-01, the first day that the format knows

[[noreturn]] void Fail(const zip_error_t* error) {
  if (zip_error_code_zip(error) == ZIP_ER_MEMORY) throw std::bad_alloc();
  zip_error_t copy;
  zip_error_init_with_code(&copy, zip_error_code_zip(error));
  const std::string reason = zip_error_strerror(&copy);
  zip_error_fini(&copy);
  throw OutputError(fmt::format("the workbook cannot be packed: {}.", reason));
}

// What libzip asks for one part. No exception may pass through its frames.
class PartSource {
 public:
  explicit PartSource(const ZipPart& part) : m_part(part) { zip_error_init(&m_error); }
  ~PartSource() { zip_error_fini(&m_error); }
  PartSource(const PartSource&) = delete;
  PartSource& operator=(const PartSource&) = delete;

  static zip_int64_t Answer(void* source, void* data, zip_uint64_t length, zip_source_cmd_t command) {
    auto* const self = static_cast<PartSource*>(source);
    try {
      return self->Answer(data, length, command);
    } catch (const std::bad_alloc&) {
      zip_error_set(&self->m_error, ZIP_ER_MEMORY, 0);
      return -1;
    }
  }

 private:
  zip_int64_t Answer(void* data, zip_uint64_t length, zip_source_cmd_t command) {
    switch (command) {
      case ZIP_SOURCE_OPEN:
        m_read = m_part.Start();
        m_piece.clear();
        m_at = 0;
        return 0;
      case ZIP_SOURCE_READ:
        return static_cast<zip_int64_t>(Read(static_cast<char*>(data), static_cast<std::size_t>(length)));
      case ZIP_SOURCE_STAT: {
        auto* const status = static_cast<zip_stat_t*>(data);
        zip_stat_init(status);
        status->size = Size();
        status->valid |= ZIP_STAT_SIZE;
        return sizeof(zip_stat_t);
      }
      case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&m_error, data, length);
      case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_READABLE;
      case ZIP_SOURCE_CLOSE:
      case ZIP_SOURCE_FREE:
        return 0;
      default:
        zip_error_set(&m_error, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
  }

  std::size_t Read(char* out, std::size_t length) {
    std::size_t count = 0;
    while (count < length) {
      if (m_at == m_piece.size()) {
        m_piece = m_read();
        m_at = 0;
        if (m_piece.empty()) break;
      }
      const std::size_t taken = std::min(length - count, m_piece.size() - m_at);
      std::memcpy(out + count, m_piece.data() + m_at, taken);
      count += taken;
      m_at += taken;
    }
    return count;
  }

  zip_uint64_t Size() {
    if (!m_hasSize) {
      const PieceReader read = m_part.Start();
      for (std::string piece = read(); !piece.empty(); piece = read()) m_size += piece.size();
      m_hasSize = true;
    }
    return m_size;
  }

  const ZipPart& m_part;
  zip_error_t m_error{};
  PieceReader m_read;
  std::string m_piece;
  std::size_t m_at = 0;  // so much of the piece is read
  bool m_hasSize = false;
  zip_uint64_t m_size = 0;
};

struct SourceFreer {
  void operator()(zip_source_t* source) const { zip_source_free(source); }
};
struct ArchiveDiscarder {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Source = std::unique_ptr<zip_source_t, SourceFreer>;
using Archive = std::unique_ptr<zip_t, ArchiveDiscarder>;

class Error {
 public:
  Error() { zip_error_init(&m_error); }
  ~Error() { zip_error_fini(&m_error); }
  Error(const Error&) = delete;
  Error& operator=(const Error&) = delete;
  zip_error_t* Get() { return &m_error; }

 private:
  zip_error_t m_error{};
};

void AddPart(zip_t* archive, const ZipPart& part, PartSource& answers) {
  Source source(zip_source_function(archive, &PartSource::Answer, &answers));
  if (!source) Fail(zip_get_error(archive));
  const zip_int64_t index = zip_file_add(archive, part.Name.c_str(), source.get(), ZIP_FL_ENC_UTF_8);
  if (index < 0) Fail(zip_get_error(archive));
  (void)source.release();  // it belongs to the archive now
  if (zip_file_set_dostime(archive, static_cast<zip_uint64_t>(index), MidnightInDosTime, FirstDayInDosTime, 0) != 0) {
    Fail(zip_get_error(archive));
  }
}

std::string ContentOf(zip_source_t* source) {
  zip_stat_t status;
  if (zip_source_stat(source, &status) != 0 || zip_source_open(source) != 0) Fail(zip_source_error(source));
  std::string content(static_cast<std::size_t>(status.size), '\0');
  const zip_int64_t count = zip_source_read(source, content.data(), content.size());
  zip_source_close(source);
  if (count != static_cast<zip_int64_t>(content.size())) Fail(zip_source_error(source));
  return content;
}

}  // namespace

ZipPart TextPart(std::string name, std::string content) {
  return {std::move(name), [content = std::move(content)] {
            return [content, isRead = false]() mutable { return std::exchange(isRead, true) ? "" : content; };
          }};
}

std::string PackZip(const std::vector<ZipPart>& parts) {
  Error error;
  const Source buffer(zip_source_buffer_create(nullptr, 0, 0, error.Get()));
  if (!buffer) Fail(error.Get());
  std::deque<PartSource> sources;  // they must live until the archive is closed
  Archive archive(zip_open_from_source(buffer.get(), ZIP_CREATE | ZIP_TRUNCATE, error.Get()));
  if (!archive) Fail(error.Get());
  zip_source_keep(buffer.get());  // closing the archive gives up its own share only
  for (const ZipPart& part : parts) AddPart(archive.get(), part, sources.emplace_back(part));
  if (zip_close(archive.get()) != 0) Fail(zip_get_error(archive.get()));
  (void)archive.release();
  return ContentOf(buffer.get());
}

}  // namespace orv
