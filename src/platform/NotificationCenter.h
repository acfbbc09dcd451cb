#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace join::platform {

/// Named notifications within the process. Main thread only.
class NotificationCenter {
public:
    /// Called with the notification's object: a text or nothing.
    using Observer = std::function<void(const std::optional<std::string>& object)>;

    void addObserver(const std::string& name, Observer observer);

    /// Calls the observers of the name, in the order in which they were added, before it returns. An observer
    /// may post, and may add observers, which are not called for the current notification.
    void post(std::string_view name, const std::optional<std::string>& object = std::nullopt);

private:
    std::map<std::string, std::vector<Observer>, std::less<>> observers_;
};

} // namespace join::platform
