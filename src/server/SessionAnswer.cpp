#include "server/SessionAnswer.h"

#include "base/Format.h"
#include "platform/Exception.h"
#include "session/JoinSessionDetails.h"

#include <algorithm>
#include <type_traits>
#include <variant>

namespace join {

namespace {

using platform::Exception;
using platform::Value;

[[noreturn]] void raiseWrongType(std::string_view name) {
    throw Exception(formatted("The member \"%@\" of the answer is of a wrong type", name));
}

bool truthOf(const platform::Member& member) {
    return std::visit(
        [&](const auto& held) -> bool {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_arithmetic_v<Held>)
                return held != Held{};
            else if constexpr (std::is_same_v<Held, std::string>)
                return truthOfText(held);
            else
                raiseWrongType(member.name);
        },
        member.value.data);
}

const std::string& textOf(const platform::Member& member) {
    const std::string* text = member.value.text();
    if (!text)
        raiseWrongType(member.name);
    return *text;
}

/// Keeps a text that is not empty; an empty one changes nothing.
void applySource(const platform::Member& member, Atomic<Text>& source, Atomic<bool>& isAvailable) {
    if (const std::string& text = textOf(member); !text.empty()) {
        source.set(text);
        isAvailable.set(true);
    }
}

void applyMember(const platform::Member& member, JoinSessionDetails& details) {
    if (member.name == "update_needed") {
        details.isUpdateNeeded.set(truthOf(member));
    } else if (member.name == "aws_server_download_url") {
        applySource(member, details.awsUrl, details.isAwsAvailable);
    } else if (member.name == "aws_server") {
        const std::string* server = member.value.text();
        details.awsServer.set(server ? Text(*server) : std::nullopt);
    } else if (member.name == "cdn_link") {
        applySource(member, details.cdnUrl, details.isCdnAvailable);
    }
}

} // namespace

bool truthOfText(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.starts_with('+') || text.starts_with('-'))
        text.remove_prefix(1);
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

const Value* meetingOf(const Value& answer) {
    const Value* level = &answer;
    for (const std::string_view name : {"response", "result", "meeting"}) {
        if (!level->dictionary())
            throw Exception(formatted("The answer holds no object that could hold \"%@\"", name));
        level = level->member(name);
        if (!level)
            return nullptr;
    }
    if (!level->dictionary())
        raiseWrongType("meeting");
    return level;
}

void applyMeeting(const Value& meeting, JoinSessionDetails& details) {
    for (const platform::Member& member : *meeting.dictionary())
        applyMember(member, details);
}

} // namespace join
