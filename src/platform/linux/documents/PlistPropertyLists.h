#pragma once

#include "platform/PropertyLists.h"

namespace join::platform {

/// Property lists, a parser for each form. Dates are texts like "2026-11-22 21:56:36 +0000", data like
/// "<0fe1>", identifiers decimal numbers.
class PlistPropertyLists : public PropertyLists {
public:
    std::optional<Value> parse(std::string_view bytes) override;
};

} // namespace join::platform
