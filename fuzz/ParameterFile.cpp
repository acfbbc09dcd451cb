// A join parameter file.

#include "Target.h"
#include "params/JoinParameterFile.h"

namespace join::fuzz {

void tryOut(std::string_view input) {
    const auto body = joinParameterBody(input);
    if (!body)
        return;
    require(liesIn(*body, input));
    require(characterCount(input.substr(0, input.size() - body->size()), input.size()) ==
            joinParameterHeader.size());
    JoinSessionDetails details;
    for (const std::string_view item : split(*body, "&")) {
        const JoinParameter* parameter = joinParameterOf(item);
        if (!parameter)
            continue;
        const std::string value = joinParameterValue(item, parameter->name);
        (details.*parameter->property).set(value);
        // Written as an item again, the value is read as it would be without the name before it.
        const std::string written = std::string(parameter->name) + "=" + value;
        require(joinParameterOf(written) == parameter);
        require(joinParameterValue(written, parameter->name) == joinParameterValue(value, parameter->name));
    }
}

} // namespace join::fuzz
