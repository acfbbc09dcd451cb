#include "ui/ErrorWindow.h"

#include "base/ServiceSettings.h"
#include "platform/Application.h"
#include "platform/Services.h"

namespace join {

using platform::services;

platform::MessageText errorMessage(std::string_view localizedMessage, std::string_view linkText) {
    platform::MessageText message{.text = {}, .fontFamily = "Helvetica", .pointSize = 14, .link = {}};
    for (std::size_t i = 0; i < localizedMessage.size(); ++i) {
        message.text += localizedMessage[i];
        if (localizedMessage.substr(i).starts_with("%%"))
            ++i;
    }
    const std::size_t offset = linkText.empty() ? std::string::npos : message.text.find(linkText);
    if (offset != std::string::npos)
        message.link = {offset, linkText.size(), std::string(systemRequirementsAddress), platform::blue};
    return message;
}

ErrorWindow::ErrorWindow() : WindowController("ErrorWindow") {}

void ErrorWindow::windowDidLoad() {
    const auto localized = [](const char* key) { return services().strings->localized(key); };
    platform::Button& ok = interface().button("ok");
    ok.setTitle(localized("OK"));
    ok.setAction([this] { okButton(); });
    platform::Window& window = interface().window();
    window.setBackgroundColor(platform::white);
    centreOnMainScreen(window);
    window.setLevel(platform::statusWindowLevel);
    platform::Label& errorText = interface().label("errorText");
    errorText.setTextColor(platform::black);
    errorText.setMessage(errorMessage(localized("ERROR_MESSAGE"), localized("CLICK_HERE")));
    window.setShouldClose([this] {
        okButton();
        return true;
    });
}

void ErrorWindow::okButton() { services().application->exitImmediately(); }

} // namespace join
