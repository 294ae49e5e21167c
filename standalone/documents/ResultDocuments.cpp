#include "standalone/documents/ResultDocuments.h"

#include <utility>

namespace orv {

ResultDocument& ResultDocuments::Add(ResultDocument document) {
  m_documents.push_back(std::move(document));
  return m_documents.back();
}

ResultDocument* ResultDocuments::Last() {
  return m_documents.empty() ? nullptr : &m_documents.back();
}

}  // namespace orv
