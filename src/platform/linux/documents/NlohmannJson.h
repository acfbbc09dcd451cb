#pragma once

#include "platform/Json.h"

namespace join::platform {

/// JSON, by nlohmann-json.
class NlohmannJson : public Json {
public:
    std::optional<Value> parse(std::string_view document) override;
    std::string serialise(const Value& value) override;
};

} // namespace join::platform
