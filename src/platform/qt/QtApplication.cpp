#include "platform/qt/QtApplication.h"

#include "platform/Bundles.h"
#include "platform/FileManager.h"
#include "platform/MainQueue.h"
#include "platform/PropertyLists.h"
#include "platform/Services.h"

#include <QApplication>
#include <QVersionNumber>

#include <cstdlib>
#include <utility>

namespace join::platform {

QtApplication::QtApplication(std::string bundlePath, Steps steps)
    : bundlePath_(std::move(bundlePath)), steps_(std::move(steps)) {
    QApplication::setQuitOnLastWindowClosed(false);
}

void QtApplication::run(ApplicationDelegate& delegate) {
    delegate_ = &delegate;
    delegate.awakeFromNib();
    services().mainQueue->enqueue([this] {
        delegate_->applicationWillFinishLaunching();
        steps_.deliverLaunchUrls();
        delegate_->applicationDidFinishLaunching();
    });
    QApplication::exec();
    terminate();
}

void QtApplication::terminate() {
    if (delegate_)
        delegate_->applicationWillTerminate();
    steps_.beforeEnd();
    // Threads of the toolkit are still running: destroying static objects now would break them.
    std::quick_exit(EXIT_SUCCESS);
}

void QtApplication::exitImmediately() { std::_Exit(EXIT_SUCCESS); }

std::string QtApplication::bundlePath() { return bundlePath_; }

std::string QtApplication::bundleIdentifier() {
    const auto list = services().bundles->infoDictionary(bundlePath_);
    const Value* identifier = list ? list->member("CFBundleIdentifier") : nullptr;
    return identifier && identifier->text() ? *identifier->text() : std::string();
}

SystemVersion QtApplication::systemVersion() {
    const auto file = services().fileManager->read(systemVersionPath);
    const auto list = file ? services().propertyLists->parse(*file) : std::nullopt;
    const Value* text = list ? list->member("ProductVersion") : nullptr;
    // A full disk may leave no file, and a crash an empty one; neither makes the system too old.
    if (!text || !text->text())
        return oldestSupported;
    const auto version = QVersionNumber::fromString(QString::fromStdString(*text->text()));
    return {version.majorVersion(), version.minorVersion()};
}

} // namespace join::platform
