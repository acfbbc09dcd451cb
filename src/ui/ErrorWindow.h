#pragma once

#include "platform/Windows.h"
#include "ui/WindowController.h"

#include <string>
#include <string_view>

namespace join {

/// The message of the error window: the localised text, in which a doubled percent sign stands for one, with
/// its first occurrence of the link text as the link. Without one there is no link.
platform::MessageText errorMessage(std::string_view localizedMessage, std::string_view linkText);

/// Tells that this system does not meet the requirements. Its OK button and its close button end the process
/// at once. Main thread only.
class ErrorWindow final : public WindowController {
public:
    ErrorWindow();

    /// Ends the process with status 0, without the application's termination. Never returns to its caller.
    void okButton();

private:
    void windowDidLoad() override;
};

} // namespace join
