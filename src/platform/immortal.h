#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace updown {

// A process-wide object that is never destroyed: threads that still run while the process ends may
// go on using it. Meant for function-local statics.
template <typename T>
class Immortal {
 public:
  template <typename... Arguments>
  explicit Immortal(Arguments&&... arguments) {
    ::new (static_cast<void*>(storage_)) T(std::forward<Arguments>(arguments)...);
  }
  Immortal(const Immortal&) = delete;
  Immortal& operator=(const Immortal&) = delete;

  T& Get() { return *std::launder(reinterpret_cast<T*>(storage_)); }

 private:
  alignas(T) std::byte storage_[sizeof(T)];
};

}  // namespace updown
