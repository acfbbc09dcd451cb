#pragma once

#include "platform/Clock.h"
#include "platform/Exception.h"
#include "platform/MainQueue.h"
#include "platform/Timers.h"
#include "support/Journal.h"

#include <mutex>
#include <utility>

namespace join::test {

/// Stays at the time it is set to; sleeps are recorded, not slept.
class FakeClock final : public platform::Clock, Recorder {
public:
    using Recorder::Recorder;
    platform::LocalTime now{2024, 2, 29, 13, 5, 9, 0};

    platform::LocalTime localTime() override { return now; }
    void sleep(std::chrono::milliseconds duration) override {
        record("sleep " + std::to_string(duration.count()) + " ms");
    }
};

/// Timers of which the last fires by hand.
class FakeTimers final : public platform::Timers, Recorder {
public:
    using Recorder::Recorder;

    bool failsOnce = false;
    std::function<void()> fire;
    std::size_t running = 0;

    std::unique_ptr<platform::Timer> repeating(std::chrono::milliseconds interval,
                                               std::function<void()> action) override {
        record("timer " + std::to_string(interval.count()) + " ms");
        if (std::exchange(failsOnce, false))
            throw platform::Exception("no more timers");
        fire = std::move(action);
        return std::make_unique<Counted<platform::Timer>>(running);
    }
};

/// Keeps the work of all threads until the test runs a turn of the loop.
class FakeMainQueue final : public platform::MainQueue {
public:
    void enqueue(std::function<void()> work) override {
        const std::scoped_lock lock(mutex_);
        works_.push_back(std::move(work));
    }
    void turn() {
        std::unique_lock lock(mutex_);
        const auto works = std::exchange(works_, {});
        lock.unlock();
        for (const auto& work : works)
            work();
    }

private:
    std::mutex mutex_;
    std::vector<std::function<void()>> works_;
};

} // namespace join::test
