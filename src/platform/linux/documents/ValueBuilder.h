#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace join::platform {

/// Builds a value from a parser's events. An event that does not fit returns false: a member without a name
/// or a name without a member, a second value at the top, or too many levels.
class ValueBuilder {
public:
    /// Adds a complete value.
    bool add(Value value) {
        Value* place = nextPlace();
        if (place)
            *place = std::move(value);
        return place;
    }

    /// Begins an array or dictionary, given empty. It receives everything up to its end.
    bool begin(Value container) {
        Value* place = open_.size() < maximumValueDepth ? nextPlace() : nullptr;
        if (!place)
            return false;
        *place = std::move(container);
        open_.push_back(place);
        return true;
    }
    bool end() {
        if (open_.empty() || isNamed_)
            return false;
        open_.pop_back();
        return true;
    }

    /// Sets the name of the next member.
    bool name(std::string text) {
        auto* members = open_.empty() ? nullptr : std::get_if<Value::Dictionary>(&open_.back()->data);
        if (!members || std::exchange(isNamed_, true))
            return false;
        members->push_back({std::move(text), {}});
        return true;
    }

    /// Returns the value at the top, once it has ended.
    std::optional<Value> takeDocument() { return std::move(document_); }

private:
    Value* nextPlace() {
        if (open_.empty())
            return document_ ? nullptr : &document_.emplace();
        if (auto* elements = std::get_if<Value::Array>(&open_.back()->data))
            return &elements->emplace_back();
        auto& members = std::get<Value::Dictionary>(open_.back()->data);
        return std::exchange(isNamed_, false) ? &members.back().value : nullptr;
    }

    std::optional<Value> document_;
    std::vector<Value*> open_; ///< the open containers, each the last value of the one before
    bool isNamed_ = false;     ///< whether the next member already has its name
};

} // namespace join::platform
