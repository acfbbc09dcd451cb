#pragma once

#include "platform/PropertyLists.h"

namespace join::platform {

/// Property lists, with one parser for each form. Dates become texts like "2026-11-22 21:56:36 +0000", data
/// like "<0fe1>", and identifiers decimal numbers.
class PlistPropertyLists : public PropertyLists {
public:
    std::optional<Value> parse(std::string_view bytes) override;
};

} // namespace join::platform
