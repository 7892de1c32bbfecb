#pragma once

#include <mutex>
#include <utility>

namespace zorvik::platform {

// A value written on one thread and read on others, copied in and out under a lock.
template <class T>
class Guarded {
  public:
    Guarded() = default;
    explicit Guarded(T value) : value_(std::move(value)) {}

    T get() const {
        const std::scoped_lock lock(mutex_);
        return value_;
    }
    void set(T value) {
        const std::scoped_lock lock(mutex_);
        std::swap(value_, value);
    }

  private:
    mutable std::mutex mutex_;
    T value_{};
};

}  // namespace zorvik::platform
