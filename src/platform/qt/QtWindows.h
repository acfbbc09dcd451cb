#pragma once

#include "platform/Windows.h"

namespace join::platform {

class QtMainQueue;

/// Windows on Qt Widgets, from the interface files that are compiled in.
class QtWindows final : public Windows {
public:
    explicit QtWindows(QtMainQueue& mainQueue);

    std::unique_ptr<Interface> load(const std::string& name) override;
    Size mainScreenSize() override;

private:
    QtMainQueue& mainQueue_;
};

} // namespace join::platform
