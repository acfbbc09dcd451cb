#pragma once

namespace join {

/// Tells that this system does not meet the requirements. Main thread only.
class ErrorWindow {
public:
    void showWindow();
};

} // namespace join
