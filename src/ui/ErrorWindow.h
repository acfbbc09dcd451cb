#pragma once

#include "ui/WindowController.h"

#include <string_view>

namespace join {

/// Returns the message of the error window: the localised text, with doubled percent signs reduced to one and
/// the first occurrence of the link text as the link. If the link text does not occur, there is no link.
platform::MessageText errorMessage(std::string_view localizedMessage, std::string_view linkText);

/// Tells the user that this system does not meet the requirements. Its OK button and its close button end the
/// process at once. Main thread only.
class ErrorWindow final : public WindowController {
public:
    ErrorWindow();

private:
    void windowDidLoad() override;
};

} // namespace join
