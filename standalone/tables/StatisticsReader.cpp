#include "standalone/tables/StatisticsReader.h"

#include <readstat.h>

#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <system_error>

#include "standalone/tables/FileForm.h"
#include "standalone/tables/OrdinaryFile.h"
#include "standalone/tables/ReadMeter.h"
#include "standalone/tables/StatisticsColumns.h"
#include "standalone/tables/StatisticsSource.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {
namespace {

using Parse = readstat_error_t (*)(readstat_parser_t*, const char*, void*);

struct Form {
  FileForm Kind;
  StatisticsProgram Program;
  Parse Function;
  // What texts are in when they turn out not to be UTF-8 and the file does not say; null when the file says.
  const char* OtherEncoding = nullptr;
  // A whole file is a multiple of so many bytes; 1 when nothing is known.
  std::uintmax_t RecordSize = 1;
};

constexpr std::uintmax_t kTransportRecord = 80;

// One run of the parser. No exception may pass through it: the first is kept, and the parser told to stop.
class Parsing {
 public:
  Parsing(const std::string& path, const TableReadOptions& options, const Form& form, const char* encoding)
      : m_meter(options),
        m_file(path, m_meter),
        m_columns(path, form.Program, m_file.TotalBytes(), options.MaximumCases),
        m_parser(readstat_parser_init()) {
    if (!m_parser) throw std::bad_alloc();
    readstat_set_metadata_handler(m_parser.get(), OnMetadata);
    readstat_set_variable_handler(m_parser.get(), OnVariable);
    readstat_set_value_handler(m_parser.get(), OnValue);
    readstat_set_value_label_handler(m_parser.get(), OnLabel);
    if (encoding != nullptr) readstat_set_file_character_encoding(m_parser.get(), encoding);
    m_file.Attach(*m_parser);
    const readstat_error_t code = form.Function(m_parser.get(), path.c_str(), this);
    m_file.ThrowFailure();
    if (m_failure) std::rethrow_exception(m_failure);
    if (code != READSTAT_OK) throw StatisticsFault(Reason(code));
  }

  MemoryTable Take() {
    MemoryTable table = m_columns.Take();
    m_meter.Finish(m_file.TotalBytes());
    return table;
  }

 private:
  struct ParserCloser {
    void operator()(readstat_parser_t* parser) const { readstat_parser_free(parser); }
  };

  // The library's text within a sentence of ours.
  static std::string Reason(readstat_error_t code) {
    std::string reason = readstat_error_message(code);
    while (reason.ends_with('.')) reason.pop_back();
    if (reason.size() > 1 && reason[0] >= 'A' && reason[0] <= 'Z' && reason[1] >= 'a')
      reason[0] = static_cast<char>(reason[0] - 'A' + 'a');
    return reason;
  }

  template <typename Call>
  int Guard(Call call) {
    if (m_failure) return READSTAT_HANDLER_ABORT;
    try {
      call();
      return READSTAT_HANDLER_OK;
    } catch (...) {
      m_failure = std::current_exception();
      return READSTAT_HANDLER_ABORT;
    }
  }
  static Parsing& Self(void* parsing) { return *static_cast<Parsing*>(parsing); }

  static int OnMetadata(readstat_metadata_t* metadata, void* self) {
    return Self(self).Guard(
        [&] { Self(self).m_columns.SetSize(readstat_get_var_count(metadata), readstat_get_row_count(metadata)); });
  }
  static int OnVariable(int index, readstat_variable_t* variable, const char* labels, void* self) {
    return Self(self).Guard([&] { Self(self).m_columns.AddVariable(index, *variable, labels); });
  }
  static int OnValue(int row, readstat_variable_t* variable, readstat_value_t value, void* self) {
    return Self(self).Guard([&] { Self(self).m_columns.AddValue(row, *variable, value); });
  }
  static int OnLabel(const char* labels, readstat_value_t value, const char* label, void* self) {
    return Self(self).Guard([&] { Self(self).m_columns.AddLabel(labels, value, label); });
  }

  ReadMeter m_meter;
  StatisticsSource m_file;
  StatisticsColumns m_columns;
  std::unique_ptr<readstat_parser_t, ParserCloser> m_parser;
  std::exception_ptr m_failure;
};

std::string TextMessage(const std::string& path, const StatisticsTextFault& fault) {
  if (fault.CaseNumber > 0) return UnreadableTextMessage(path, fault.CaseNumber, fault.Variable);
  return DamagedFileMessage(path, "a table", "a label is not in the file's encoding");
}

MemoryTable ReadForm(const std::string& path, const TableReadOptions& options, const Form& form) {
  CheckOrdinaryFile(path, form.Kind, false);
  try {
    std::error_code error;
    if (std::filesystem::file_size(path, error) % form.RecordSize != 0)
      throw StatisticsFault("its last record is cut off");
    try {
      return Parsing(path, options, form, nullptr).Take();
    } catch (const StatisticsTextFault&) {
      if (form.OtherEncoding == nullptr) throw;
    }
    return Parsing(path, options, form, form.OtherEncoding).Take();
  } catch (const StatisticsTextFault& fault) {
    throw TableError(TextMessage(path, fault));
  } catch (const StatisticsFault& fault) {
    const FileForm found = FormOfFile(path);
    if (found != form.Kind) throw TableError(WrongFormMessage(path, FormName(form.Kind), found));
    throw TableError(DamagedFileMessage(path, FormName(form.Kind), fault.what()));
  }
}

}  // namespace

MemoryTable ReadSasFile(const std::string& path, const TableReadOptions& options) {
  return ReadForm(path, options, {FileForm::Sas, StatisticsProgram::Sas, readstat_parse_sas7bdat});
}

MemoryTable ReadSasTransportFile(const std::string& path, const TableReadOptions& options) {
  // The form knows no encodings; its files come from machines that wrote this one.
  return ReadForm(
      path, options,
      {FileForm::SasTransport, StatisticsProgram::Sas, readstat_parse_xport, "WINDOWS-1252", kTransportRecord});
}

MemoryTable ReadSpssFile(const std::string& path, const TableReadOptions& options) {
  return ReadForm(path, options, {FileForm::Spss, StatisticsProgram::Spss, readstat_parse_sav});
}

MemoryTable ReadSpssPortableFile(const std::string& path, const TableReadOptions& options) {
  return ReadForm(path, options, {FileForm::SpssPortable, StatisticsProgram::Spss, readstat_parse_por});
}

MemoryTable ReadStataFile(const std::string& path, const TableReadOptions& options) {
  return ReadForm(path, options, {FileForm::Stata, StatisticsProgram::Stata, readstat_parse_dta});
}

}  // namespace orv
