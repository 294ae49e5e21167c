// ResultDocuments: the documents of a run in the order in which the module produced them.
#pragma once

#include <cstddef>
#include <deque>

#include "standalone/documents/ResultDocument.h"

namespace orv {

class ResultDocuments {
 public:
  // Takes a document over. The reference stays valid while the store lives and is not cleared.
  ResultDocument& Add(ResultDocument document);
  // The document added last, null when there is none.
  ResultDocument* Last();
  void Clear() { m_documents.clear(); }

  bool IsEmpty() const { return m_documents.empty(); }
  std::size_t Size() const { return m_documents.size(); }
  const ResultDocument& operator[](std::size_t index) const { return m_documents[index]; }
  std::deque<ResultDocument>::const_iterator begin() const { return m_documents.begin(); }
  std::deque<ResultDocument>::const_iterator end() const { return m_documents.end(); }

 private:
  std::deque<ResultDocument> m_documents;  // a deque, because it never moves its elements when it grows
};

}  // namespace orv
