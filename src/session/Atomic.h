#pragma once

#include <mutex>
#include <utility>

namespace join {

/// A value whose single reads and writes are indivisible. There is no transaction over several of them.
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
        std::swap(value_, value); // the old value is destroyed after the lock is gone
    }

private:
    mutable std::mutex mutex_;
    Value value_{};
};

} // namespace join
