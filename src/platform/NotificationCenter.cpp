#include "platform/NotificationCenter.h"

#include <utility>

namespace join::platform {

void NotificationCenter::addObserver(const std::string& name, Observer observer) {
    observers_[name].push_back(std::move(observer));
}

void NotificationCenter::post(std::string_view name, const std::optional<std::string>& object) {
    const auto found = observers_.find(name);
    if (found == observers_.end())
        return;
    const auto observers = found->second; // a copy, because an observer may add one, which moves the list
    for (const Observer& observer : observers)
        observer(object);
}

} // namespace join::platform
