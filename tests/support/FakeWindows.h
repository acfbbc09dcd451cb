#pragma once

#include "platform/Exception.h"
#include "platform/Windows.h"
#include "support/Journal.h"

#include <map>
#include <utility>

namespace join::test {

/// Any kind of control, so that a test need not know the kind; it and the window are recorded as
/// "NAME: action".
struct RecordingControl final : platform::Label,
                                platform::TextField,
                                platform::Button,
                                platform::ProgressIndicator,
                                Recorder {
    using Recorder::Recorder;

    std::string typed;           ///< what stands in it
    std::function<void()> click; ///< the user's

    void setStringValue(const std::string& text) override {
        typed = text;
        record(text);
    }
    std::string stringValue() const override { return typed; }
    void setPlaceholder(const std::string& text) override { record("prompt " + text); }
    void setErrorPlaceholder(const std::string& text) override { record("red prompt " + text); }
    void announce() override { record("announced"); }
    void setMessage(const platform::MessageText& message) override {
        std::string text = message.text;
        if (message.link && message.link->address.starts_with("https://"))
            text.insert(message.link->offset + message.link->length, ">").insert(message.link->offset, "<");
        record(text);
    }
    void becomeFirstResponder() override { record("focus"); }
    void setTitle(const std::string& title) override { record("title " + title); }
    void setAction(std::function<void()> action) override { click = std::move(action); }
    void startAnimation() override { record("start"); }
    void stopAnimation() override { record("stop"); }
    void setValue(const std::optional<platform::ProgressValue>& value) override {
        record(value ? std::to_string(value->part).substr(0, 4) + " " + value->text : "turn");
    }
};

/// Has every outlet that the logic asks for.
class FakeWindow final : public platform::Window, Recorder {
public:
    FakeWindow(Journal& journal, const std::string& name)
        : Recorder(journal, name + ": "), journal_(journal) {}
    std::function<void()> close; ///< the user's

    platform::Label& label(const std::string& outlet) override { return control(outlet); }
    platform::TextField& textField(const std::string& outlet) override { return control(outlet); }
    platform::Button& button(const std::string& outlet) override { return control(outlet); }
    platform::ProgressIndicator& progressIndicator(const std::string& outlet) override {
        return control(outlet);
    }
    RecordingControl& control(const std::string& outlet) {
        return controls_.try_emplace(outlet, journal_, outlet + ": ").first->second;
    }

    void setLevel(int level) override { record("level " + std::to_string(level)); }
    void setTitle(const std::string& title) override { record("title " + title); }
    void setWhite() override { record("white"); }
    void hideCloseButton() override { record("no close"); }
    void setCloseAction(std::function<void()> action) override { close = std::move(action); }
    void setBusy(bool isBusy) override { record(isBusy ? "busy" : "ready"); }
    void display() override { record("display"); }
    void makeKeyAndOrderFront() override { setVisible(true, "front"); }
    void orderOut() override { setVisible(false, "out"); }
    bool isVisible() const override { return isVisible_; }

private:
    void setVisible(bool visible, const char* action) {
        isVisible_ = visible;
        record(action);
    }

    Journal& journal_;
    std::map<std::string, RecordingControl> controls_;
    bool isVisible_ = false;
};

class FakeWindows final : public platform::Windows {
public:
    explicit FakeWindows(Journal& journal) : journal_(journal) {}
    bool failsOnce = false;
    std::map<std::string, FakeWindow*> loaded; ///< valid as long as their controllers live

    std::unique_ptr<platform::Window> load(const std::string& name) override {
        if (std::exchange(failsOnce, false))
            throw platform::Exception("no interface file " + name);
        journal_.push_back("load " + name);
        auto made = std::make_unique<FakeWindow>(journal_, name);
        loaded[name] = made.get();
        return made;
    }

private:
    Journal& journal_;
};

struct FakeStrings final : platform::Strings {
    std::map<std::string, std::string> texts; ///< instead of the key in brackets
    std::string localized(const std::string& key) override {
        return texts.contains(key) ? texts.at(key) : "[" + key + "]";
    }
};

} // namespace join::test
