#include "ui/TavoJoinMainWindowHandler.h"

#include "base/Logging.h"
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

constexpr int statusOk = 200;

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
    : WindowController("TavoJoinMainWindow"), joinInfoWindow_(joinInfoWindow) {}

platform::TextField& TavoJoinMainWindowHandler::keyInputTextfield() {
    return window().textField("keyInputTextfield");
}

platform::TextField& TavoJoinMainWindowHandler::emailInputTextfield() {
    return window().textField("emailInputTextfield");
}

void TavoJoinMainWindowHandler::windowDidLoad() {
    window().setLevel(platform::floatingWindowLevel);
    // Its close button is hidden, but desktops have other ways to close a window, and a join without this
    // window could not be finished.
    window().setCloseAction([this] { cancelButtonAction(); });
    window().hideCloseButton();
    window().setTitle(localized("JOIN"));
    window().label("keyLabel").setStringValue(localized("SESSION_KEY"));
    window().label("emailLabel").setStringValue(localized("EMAIL_ADDRESS"));
    window().button("cancelButton").setTitle(localized("CANCEL"));
    window().button("cancelButton").setAction([this] { cancelButtonAction(); });
    window().button("joinButton").setTitle(localized("JOIN"));
    window().button("joinButton").setAction([this] { joinButtonAction(); });
    keyInputTextfield().setPlaceholder(localized("ENTER_KEY"));
    emailInputTextfield().setPlaceholder(localized("ENTER_EMAIL"));
    keyInputTextfield().becomeFirstResponder();
}

void TavoJoinMainWindowHandler::showWindowAskingForValidKey() {
    keyInputTextfield().setErrorPlaceholder(localized("ENTER_VALID_KEY"));
    showWindow();
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
            return;
        }
        const auto prompt = [](platform::TextField& field, const std::string& value, const char* textKey) {
            value.empty() ? field.setErrorPlaceholder(localized(textKey)) : field.setPlaceholder(value);
        };
        prompt(keyInputTextfield(), key, "ENTER_KEY");
        prompt(emailInputTextfield(), email, "ENTER_EMAIL");
        (key.empty() ? keyInputTextfield() : emailInputTextfield()).becomeFirstResponder();
    });
}

void TavoJoinMainWindowHandler::joinWith(const std::string& key, const std::string& email) {
    session().key.set(key);
    session().emailID.set(email);
    log("%s : Key : %@ Email : %@", "-[TavoJoinMainWindowHandler joinButtonAction:]", key, email);
    keyInputTextfield().setStringValue("");
    keyInputTextfield().setPlaceholder(key); // while it is being checked
    setBusy(true);
    const bool isValid = isKeyValid(key);
    setBusy(false);
    if (!isValid) {
        keyInputTextfield().setErrorPlaceholder(localized("ENTER_VALID_KEY"));
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

void TavoJoinMainWindowHandler::setBusy(bool isBusy) {
    platform::ProgressIndicator& progress = window().progressIndicator("progress");
    isBusy ? progress.startAnimation() : progress.stopAnimation();
    window().setBusy(isBusy);
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
    const Text body = reply.body && platform::isUtf8(*reply.body) ? reply.body : std::nullopt;
    const auto validity = body ? keyValidity(*body) : std::nullopt;
    log("%s : Response string : %@ isvalid : %@", method, body, validity ? Text(*validity) : std::nullopt);
    return validity && validity->starts_with("true");
}

void TavoJoinMainWindowHandler::cancelButtonAction() {
    orderOut();
    log("%s : Terminating tavo join from main window cancel button event",
        "-[TavoJoinMainWindowHandler cancelButtonAction:]");
    quit();
}

} // namespace join
