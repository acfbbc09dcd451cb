#include "ui/ErrorWindow.h"

#include "base/ServiceSettings.h"
#include "platform/Application.h"
#include "platform/Services.h"

namespace join {

platform::MessageText errorMessage(std::string_view localizedMessage, std::string_view linkText) {
    platform::MessageText message;
    for (std::size_t i = 0; i < localizedMessage.size(); ++i) {
        message.text += localizedMessage[i];
        if (localizedMessage.substr(i).starts_with("%%"))
            ++i;
    }
    const std::size_t offset = linkText.empty() ? std::string::npos : message.text.find(linkText);
    if (offset != std::string::npos)
        message.link = {offset, linkText.size(), std::string(systemRequirementsAddress)};
    return message;
}

ErrorWindow::ErrorWindow() : WindowController("ErrorWindow") {}

void ErrorWindow::windowDidLoad() {
    const auto okButton = [] { platform::services().application->exitImmediately(); };
    window().button("ok").setTitle(localized("OK"));
    window().button("ok").setAction(okButton);
    window().setTitle(localized("JOIN"));
    window().setWhite();
    window().setLevel(platform::statusWindowLevel);
    window().label("errorText").setMessage(errorMessage(localized("ERROR_MESSAGE"), localized("CLICK_HERE")));
    window().setCloseAction(okButton);
}

} // namespace join
