#include "ui/TavoJoinMainWindowHandler.h"

#include "base/Logging.h"
#include "platform/Application.h"
#include "platform/HttpClient.h"
#include "platform/NotificationCenter.h"
#include "platform/Services.h"
#include "platform/Utf8.h"
#include "session/JoinSessionDetails.h"
#include "ui/KeyAnswer.h"
#include "ui/TavoJoinWindowHandler.h"

namespace join {

using platform::services;

namespace {

constexpr int placeholderPointSize = 13;
constexpr int statusOk = 200;

std::string localized(const std::string& key) { return services().strings->localized(key); }

std::string_view sessionTypeName(std::int32_t sessionType) {
    switch (sessionType) {
    case SessionType::meeting:
        return "Meeting";
    case SessionType::unattended:
        return "Unattended";
    default:
        return "Fendel";
    }
}

} // namespace

TavoJoinMainWindowHandler::TavoJoinMainWindowHandler(TavoJoinWindowHandler& joinInfoWindow)
    : WindowController("TavoJoinMainWindow"),
      joinInfoWindow_(joinInfoWindow), errorTxtDict_{platform::red, placeholderPointSize} {}

platform::TextField& TavoJoinMainWindowHandler::keyInputTextfield() {
    return interface().textField("keyInputTextfield");
}

platform::TextField& TavoJoinMainWindowHandler::emailInputTextfield() {
    return interface().textField("emailInputTextfield");
}

void TavoJoinMainWindowHandler::windowDidLoad() {
    platform::Window& window = interface().window();
    centreOnMainScreen(window);
    window.setLevel(platform::floatingWindowLevel);
    // Its close button is hidden, but desktops have other ways to close a window, and a join without this
    // window could not be finished.
    window.setShouldClose([this] {
        cancelButtonAction();
        return true;
    });
    platform::Button& cancelButton = interface().button("cancelButton");
    cancelButton.setTitle(localized("CANCEL"));
    cancelButton.setEnabled(true);
    cancelButton.setAction([this] { cancelButtonAction(); });
    platform::Button& joinButton = interface().button("joinButton");
    joinButton.setEnabled(true);
    joinButton.setTitle(localized("JOIN"));
    joinButton.setAction([this] { joinButtonAction(); });
    window.setTitle(localized("JOIN"));
    keyInputTextfield().setPlaceholder(localized("ENTER_KEY"));
    emailInputTextfield().setPlaceholder(localized("ENTER_EMAIL"));
    for (const auto button : {platform::StandardButton::zoom, platform::StandardButton::minimise,
                              platform::StandardButton::close})
        window.hideStandardButton(button);
    keyInputTextfield().becomeFirstResponder();
}

void TavoJoinMainWindowHandler::showWindowAskingForValidKey() {
    showError(keyInputTextfield(), "ENTER_VALID_KEY");
    showWindow();
}

void TavoJoinMainWindowHandler::showError(platform::TextField& field, const std::string& textKey) {
    field.setAttributedPlaceholder(localized(textKey), errorTxtDict_);
}

void TavoJoinMainWindowHandler::close() {
    orderOut();
    log("%s : Join main window close event called!", "-[TavoJoinMainWindowHandler close]");
}

void TavoJoinMainWindowHandler::joinButtonAction() {
    reportingExceptions("-[TavoJoinMainWindowHandler joinButtonAction:]", [this] {
        services().notificationCenter->post("ReadJoinParameters");
        const std::string key(trimBlanks(keyInputTextfield().stringValue()));
        const std::string email(trimBlanks(emailInputTextfield().stringValue()));
        if (!key.empty() && !email.empty()) {
            joinWith(key, email);
        } else if (!email.empty()) {
            showError(keyInputTextfield(), "ENTER_KEY");
            emailInputTextfield().setPlaceholder(email);
        } else if (!key.empty()) {
            showError(emailInputTextfield(), "ENTER_EMAIL");
            keyInputTextfield().setPlaceholder(key);
        } else {
            showError(keyInputTextfield(), "ENTER_KEY");
            showError(emailInputTextfield(), "ENTER_EMAIL");
        }
    });
}

void TavoJoinMainWindowHandler::joinWith(const std::string& key, const std::string& email) {
    session().key.set(key);
    session().emailID.set(email);
    log("%s : Key : %@ Email : %@", "-[TavoJoinMainWindowHandler joinButtonAction:]", key, email);
    keyInputTextfield().setStringValue("");
    if (!isKeyValid(key)) {
        showError(keyInputTextfield(), "ENTER_VALID_KEY");
        keyInputTextfield().becomeFirstResponder();
        return;
    }
    emailInputTextfield().setStringValue("");
    joinInfoWindow_.showProgress(); // what follows may change it at once
    services().notificationCenter->post("ModifyJoinDetails");
    services().notificationCenter->post("LaunchTavoApp");
    close();
    joinInfoWindow_.showWindow();
}

bool TavoJoinMainWindowHandler::isKeyValid(const std::string& key) {
    constexpr auto method = "-[TavoJoinMainWindowHandler isKeyValid:]";
    platform::HttpRequest request;
    request.url =
        formatted("https://%@/api/public/xml/meetings/checkSessionID?key=%@&role=agent&sessionType=%@",
                  session().webServerName(), key, sessionTypeName(session().sessionType()));
    const platform::HttpReply reply = services().httpClient->get(request);
    const int status = reply.status.value_or(0);
    if (reply.error)
        log("%s : The key could not be checked : %@", method, reply.error->description);
    if (status != statusOk) {
        log("%s : Error getting while checking key %@, HTTP status code %li", method, key, status);
        return false;
    }
    const bool isText = reply.body && platform::isUtf8(*reply.body);
    const Text body = isText ? reply.body : std::nullopt;
    const auto validity = body ? keyValidity(*body) : std::nullopt;
    log("%s : Response string : %@ isvalid : %@", method, body, validity ? Text(*validity) : std::nullopt);
    return validity && validity->starts_with("true");
}

void TavoJoinMainWindowHandler::cancelButtonAction() {
    orderOut();
    log("%s : Terminating tavo join from main window cancel button event",
        "-[TavoJoinMainWindowHandler cancelButtonAction:]");
    logSessionEnd();
    services().application->terminate();
}

} // namespace join
