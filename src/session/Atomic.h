#pragma once

#include <mutex>
#include <utility>

namespace join {

/// A value whose individual reads and writes are atomic. There are no transactions over several values.
template <class Value>
class Atomic {
public:
    Atomic() = default;
    explicit Atomic(Value value) : value_(std::move(value)) {}

    Value operator()() const {
        const std::scoped_lock lock(mutex_);
        return value_;
    }

    void set(Value value) {
        const std::scoped_lock lock(mutex_);
        std::swap(value_, value); // the old value is destroyed after the lock is released
    }

private:
    mutable std::mutex mutex_;
    Value value_{};
};

} // namespace join
