#pragma once

#include <QObject>

#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>

namespace join::platform {

class QtMainQueue;

/// Lets the windows live while the logic waits for work that takes long. The work runs on a thread that is
/// started for the first of it and lasts as long as this object. If it takes more than a moment, the loop turns meanwhile: windows are painted,
/// moved and animated, and answer the window manager. No queued work and no timer of the logic runs, and the
/// user can only leave: close a window, or use Ctrl+W, Ctrl+Q, Escape or a button with the property
/// "cancels". All other input is lost. Create and destroy it on the main thread.
class QtWaiting final : QObject {
public:
    explicit QtWaiting(QtMainQueue& mainQueue);

    /// Runs the work, and returns its result or throws its exception when it has ended. Any thread; except on
    /// the main thread, and for a user who leaves during a wait, this only calls the work.
    template <std::invocable Work>
    std::invoke_result_t<Work> during(const Work& work) {
        if constexpr (std::is_void_v<std::invoke_result_t<Work>>) {
            await(work);
        } else {
            std::optional<std::invoke_result_t<Work>> result;
            await([&] { result.emplace(work()); });
            return *std::move(result);
        }
    }

private:
    void await(const std::function<void()>& work);
    void turnLoopUntil(const std::future<void>& end);
    void doWork(const std::stop_token& stop);
    bool eventFilter(QObject* receiver, QEvent* event) override;

    QtMainQueue& mainQueue_;
    bool waits_ = false;
    std::mutex mutex_;
    std::condition_variable_any given_;
    std::packaged_task<void()> work_; ///< given to the thread, which has not taken it yet
    std::jthread thread_;             ///< ends before everything that it uses
};

} // namespace join::platform
