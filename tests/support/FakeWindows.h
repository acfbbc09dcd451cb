#pragma once

#include "platform/Exception.h"
#include "platform/Windows.h"
#include "support/Journal.h"

#include <map>
#include <utility>

namespace join::test {

inline std::string described(platform::Color color) {
    return std::to_string(color.red) + "," + std::to_string(color.green) + "," + std::to_string(color.blue);
}

/// A window; it and the controls are recorded as "NAME: action".
class RecordingWindow final : public platform::Window, Recorder {
public:
    using Recorder::Recorder;
    std::function<bool()> shouldClose; ///< the user's click

    platform::Size frameSize() const override { return {400, 150}; }
    void setFrameOrigin(platform::Point at) override {
        record("origin " + std::to_string(at.x) + "," + std::to_string(at.y));
    }
    void setLevel(int level) override { record("level " + std::to_string(level)); }
    void setBackgroundColor(platform::Color color) override { record("background " + described(color)); }
    void setTitle(const std::string& title) override { record("title " + title); }
    void hideStandardButton(platform::StandardButton button) override {
        constexpr const char* names[] = {"close", "minimise", "zoom"};
        record(std::string("no ") + names[static_cast<int>(button)]);
    }
    void setShouldClose(std::function<bool()> asked) override { shouldClose = std::move(asked); }
    void display() override { record("display"); }
    void makeKeyAndOrderFront() override { setVisible(true, "front"); }
    void orderOut() override { setVisible(false, "out"); }
    bool isVisible() const override { return isVisible_; }

private:
    void setVisible(bool visible, const char* action) {
        isVisible_ = visible;
        record(action);
    }

    bool isVisible_ = false;
};

/// Any kind of control, so that a test need not know the kind.
struct RecordingControl final : platform::Label,
                                platform::TextField,
                                platform::Button,
                                platform::ProgressIndicator,
                                Recorder {
    using Recorder::Recorder;

    std::string typed; ///< what stands in it
    platform::MessageText message;
    std::function<void()> click; ///< the user's

    void setStringValue(const std::string& text) override {
        typed = text;
        record(text);
    }
    std::string stringValue() const override { return typed; }
    void setPlaceholder(const std::string& text) override { record("prompt " + text); }
    void setAttributedPlaceholder(const std::string& text, const platform::TextAttributes& how) override {
        record("prompt " + text + " in " + described(how.color) + " at " + std::to_string(how.pointSize));
    }
    void setTextColor(platform::Color color) override { record("text " + described(color)); }
    void setMessage(const platform::MessageText& text) override {
        message = text;
        record("message");
    }
    void becomeFirstResponder() override { record("focus"); }

    void setTitle(const std::string& title) override { record("title " + title); }
    void setEnabled(bool enabled) override { record(enabled ? "enabled" : "disabled"); }
    void setAction(std::function<void()> action) override { click = std::move(action); }

    void startAnimation() override { record("start"); }
    void stopAnimation() override { record("stop"); }
    void setHidden(bool hidden) override { record(hidden ? "hidden" : "shown"); }
};

/// Has every outlet that the logic asks for.
class FakeInterface final : public platform::Interface {
public:
    FakeInterface(Journal& journal, const std::string& name)
        : journal_(journal), window_(journal, name + ": ") {}

    RecordingWindow& window() override { return window_; }
    platform::Label& label(const std::string& outlet) override { return control(outlet); }
    platform::TextField& textField(const std::string& outlet) override { return control(outlet); }
    platform::Button& button(const std::string& outlet) override { return control(outlet); }
    platform::ProgressIndicator& progressIndicator(const std::string& outlet) override {
        return control(outlet);
    }

    RecordingControl& control(const std::string& outlet) {
        return controls_.try_emplace(outlet, journal_, outlet + ": ").first->second;
    }

private:
    Journal& journal_;
    RecordingWindow window_;
    std::map<std::string, RecordingControl> controls_;
};

class FakeWindows final : public platform::Windows {
public:
    explicit FakeWindows(Journal& journal) : journal_(journal) {}
    bool fails = false;
    std::map<std::string, FakeInterface*> loaded; ///< valid as long as their controllers live

    std::unique_ptr<platform::Interface> load(const std::string& name) override {
        if (fails)
            throw platform::Exception("no interface file " + name);
        journal_.push_back("load " + name);
        auto made = std::make_unique<FakeInterface>(journal_, name);
        loaded[name] = made.get();
        return made;
    }
    platform::Size mainScreenSize() override { return {1920, 1080}; }

private:
    Journal& journal_;
};

struct FakeStrings final : platform::Strings {
    std::string localized(const std::string& key) override { return "[" + key + "]"; }
};

} // namespace join::test
