#include "server/SessionAnswer.h"

#include "base/Format.h"
#include "platform/Exception.h"
#include "session/JoinSessionDetails.h"

#include <algorithm>
#include <array>
#include <type_traits>
#include <variant>

namespace join {

namespace {

using platform::Exception;
using platform::Value;

[[noreturn]] void raiseWrongType(std::string_view name) {
    throw Exception(formatted("The member \"%@\" of the answer is of a wrong type", name));
}

bool truthOf(std::string_view name, const Value& value) {
    return std::visit(
        [&](const auto& held) -> bool {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_arithmetic_v<Held>)
                return held != Held{};
            else if constexpr (std::is_same_v<Held, std::string>)
                return truthOfText(held);
            else
                raiseWrongType(name);
        },
        value.data);
}

const std::string& textOf(std::string_view name, const Value& value) {
    const std::string* text = value.text();
    if (!text)
        raiseWrongType(name);
    return *text;
}

void applyUpdateNeeded(const platform::Member& member, JoinSessionDetails& details) {
    details.isUpdateNeeded.set(truthOf(member.name, member.value));
}

void applyAwsUrl(const platform::Member& member, JoinSessionDetails& details) {
    if (const std::string& url = textOf(member.name, member.value); !url.empty()) {
        details.awsUrl.set(url);
        details.isAwsAvailable.set(true);
    }
}

void applyAwsServer(const platform::Member& member, JoinSessionDetails& details) {
    const std::string* server = member.value.text();
    details.awsServer.set(server ? Text(*server) : std::nullopt);
}

void applyCdnLink(const platform::Member& member, JoinSessionDetails& details) {
    if (const std::string& link = textOf(member.name, member.value); !link.empty()) {
        details.cdnUrl.set(link);
        details.isCdnAvailable.set(true);
    }
}

struct Rule {
    std::string_view name;
    void (*apply)(const platform::Member&, JoinSessionDetails&);
};

constexpr std::array<Rule, 4> rules = {{
    {"update_needed", applyUpdateNeeded},
    {"aws_server_download_url", applyAwsUrl},
    {"aws_server", applyAwsServer},
    {"cdn_link", applyCdnLink},
}};

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
    for (const platform::Member& member : *meeting.dictionary()) {
        const auto rule = std::ranges::find(rules, member.name, &Rule::name);
        if (rule != rules.end())
            rule->apply(member, details);
    }
}

} // namespace join
