// Working store from the host: an array of zeroed values that goes back to the host on every way out.
#pragma once

#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

#include "host/Host.h"

namespace orv {

// An allocation that fails leaves the array empty and Failed() true; the caller decides what that means.
template <typename T>
class WorkArray {
  static_assert(std::is_trivially_copyable_v<T>, "host memory is zeroed and released as bytes");

 public:
  WorkArray(Host& host, std::size_t count) : m_host(host), m_count(count) {
    // One element at least, so that a model without columns is not mistaken for memory that is out.
    const std::size_t elements = count > 0 ? count : 1;
    if (elements > std::numeric_limits<std::size_t>::max() / sizeof(T)) return;
    const std::size_t bytes = elements * sizeof(T);
    void* block = nullptr;
    if (host.AllocMem(&block, bytes) != 0) return;
    std::memset(block, 0, bytes);
    m_data = static_cast<T*>(block);
  }
  ~WorkArray() {
    if (m_data != nullptr) m_host.FreeMem(m_data);
  }
  WorkArray(const WorkArray&) = delete;
  WorkArray& operator=(const WorkArray&) = delete;

  bool Failed() const { return m_data == nullptr; }
  T* Data() { return m_data; }
  const T* Data() const { return m_data; }
  std::size_t Count() const { return m_count; }
  T& operator[](std::size_t index) { return m_data[index]; }
  const T& operator[](std::size_t index) const { return m_data[index]; }
  void Clear() { std::memset(static_cast<void*>(m_data), 0, m_count * sizeof(T)); }

 private:
  Host& m_host;
  T* m_data = nullptr;
  std::size_t m_count = 0;
};

// A square matrix of the host's memory, reached by row. One block, so a failure leaves nothing behind.
class WorkMatrix {
 public:
  WorkMatrix(Host& host, std::size_t order) : m_values(host, order * order), m_rows(host, order) {
    if (Failed()) return;
    for (std::size_t row = 0; row < order; ++row) m_rows[row] = m_values.Data() + row * order;
  }
  bool Failed() const { return m_values.Failed() || m_rows.Failed(); }
  double** Rows() { return m_rows.Data(); }
  double* operator[](std::size_t row) { return m_rows[row]; }
  const double* operator[](std::size_t row) const { return m_rows[row]; }
  void Clear() { m_values.Clear(); }
  double* Data() { return m_values.Data(); }
  const double* Data() const { return m_values.Data(); }

 private:
  WorkArray<double> m_values;
  WorkArray<double*> m_rows;
};

}  // namespace orv
