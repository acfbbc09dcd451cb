#include "support/LogicTest.h"

#include "platform/Services.h"
#include "support/MachOImage.h"

namespace join::test {

LogicTest::LogicTest() {
    platform::services() = {&application, &bundles,   &clock,         &files,   &http,          &json,
                            &logSink,     &mainQueue, &notifications, &paths,   &propertyLists, &strings,
                            &tasks,       &timers,    &urlEvents,     &windows, &workspace};
    slots() = {};
}

LogicTest::~LogicTest() {
    slots() = {};
    platform::services() = {};
}

void LogicTest::prepared() {
    slots() = {};
    delegate = {};
    notifications = {};
    delegate.awakeFromNib();
    delegate.applicationWillFinishLaunching();
    journal.clear();
    logSink.lines.clear();
}

Journal LogicTest::said(const std::string& method) const {
    Journal messages;
    for (const std::string& line : logSink.lines)
        if (line.starts_with(method + " : "))
            messages.push_back(line.substr(method.size() + 3));
    return messages;
}

long LogicTest::downloadsOf(const std::string& place) {
    mainQueue.turn();
    return std::ranges::count_if(journal, [&](const std::string& entry) {
        return entry.starts_with("download https://") && entry.find(place) != std::string::npos;
    });
}

void LogicTest::installJoin(const std::string& version) {
    files.putFolder("/Applications/Join.app");
    bundles.versions["/Applications/Join.app"] = version;
}

void LogicTest::installAgent(const std::string& version) {
    files.put(agent + "/Contents/MacOS/Tavo", "program");
    bundles.versions[agent] = version;
}

void LogicTest::installCrashDetector(const std::string& version) {
    files.put(crashDetector, machImage(propertyList("CFBundleShortVersionString", version)));
}

void LogicTest::expectSessionCheck(const std::string& installedVersion, const std::string& members) {
    http.expect("https://host/api/public/json/meetings/checkSessionID?key=123456789&installed-version=" +
                    installedVersion + "&os=mac",
                {200, R"({"response":{"result":{"meeting":{)" + members + "}}}}", {}});
}

} // namespace join::test
