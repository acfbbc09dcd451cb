#include "session/ProcessSlots.h"

#include "base/Logging.h"
#include "platform/Exception.h"

#include <mutex>

namespace join {

namespace {

std::mutex creationLock;

} // namespace

ProcessSlots& slots() {
    static ProcessSlots instance;
    return instance;
}

platform::FileManager& files() { return *slots().tavoDirectoryManager; }

JoinSessionDetails* JoinSessionDetails::getInstance() {
    constexpr auto method = "+[JoinSessionDetails getInstance]";
    try {
        const std::scoped_lock lock(creationLock);
        auto& joinInfo = slots().joinInfo;
        if (!joinInfo) {
            auto created = std::make_unique<JoinSessionDetails>();
            log("%s : Update Info Object Allocated", method);
            joinInfo = std::move(created);
        }
        return joinInfo.get();
    } catch (const std::exception& exception) {
        logExceptionBanner(method, exception);
        return nullptr;
    }
}

JoinSessionDetails& session() {
    JoinSessionDetails* const instance = JoinSessionDetails::getInstance();
    if (!instance)
        throw platform::Exception("There is no session state");
    return *instance;
}

} // namespace join
