#include "platform/linux/documents/NlohmannJson.h"

#include "platform/linux/documents/ValueBuilder.h"

#include <nlohmann/json.hpp>

#include <limits>
#include <utility>

namespace join::platform {

namespace {

using Parser = nlohmann::json;
using Writer = nlohmann::ordered_json;

/// Passes the parser's events on. A handler that returns false ends the parse.
class Events : public nlohmann::json_sax<Parser> {
public:
    explicit Events(ValueBuilder& builder) : builder_(builder) {}

    bool null() override { return builder_.add({}); }
    bool boolean(bool flag) override { return builder_.add({flag}); }
    bool number_integer(number_integer_t number) override { return builder_.add({std::int64_t{number}}); }
    bool number_unsigned(number_unsigned_t number) override {
        if (std::cmp_less_equal(number, std::numeric_limits<std::int64_t>::max()))
            return builder_.add({static_cast<std::int64_t>(number)});
        return builder_.add({static_cast<double>(number)});
    }
    bool number_float(number_float_t number, const string_t& /*text*/) override {
        return builder_.add({number});
    }
    bool string(string_t& text) override { return builder_.add({std::move(text)}); }
    bool binary(binary_t& /*bytes*/) override { return false; }

    bool start_object(std::size_t /*count*/) override { return builder_.begin({Value::Dictionary()}); }
    bool key(string_t& name) override { return builder_.name(std::move(name)); }
    bool end_object() override { return builder_.end(); }
    bool start_array(std::size_t /*count*/) override { return builder_.begin({Value::Array()}); }
    bool end_array() override { return builder_.end(); }

    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        return false;
    }

private:
    ValueBuilder& builder_;
};

/// Turns a value into the library's own, whose members keep their order and may share a name.
struct Conversion {
    Writer operator()(std::monostate /*null*/) const { return nullptr; }
    Writer operator()(const auto& scalar) const { return scalar; }
    Writer operator()(const Value::Array& elements) const {
        Writer::array_t array;
        for (const Value& element : elements)
            array.push_back(std::visit(*this, element.data));
        return array;
    }
    Writer operator()(const Value::Dictionary& members) const {
        Writer::object_t object;
        for (const Member& member : members)
            object.emplace_back(member.name, std::visit(*this, member.value.data));
        return object;
    }
};

} // namespace

std::optional<Value> NlohmannJson::parse(std::string_view document) {
    // The parser would take a NUL for the end of the document and ignore what follows.
    if (document.find('\0') != std::string_view::npos)
        return std::nullopt;
    try {
        ValueBuilder builder;
        Events events(builder);
        const bool isWhole = Parser::sax_parse(document.begin(), document.end(), &events);
        auto value = isWhole ? builder.takeDocument() : std::nullopt;
        const bool isContainer = value && (value->dictionary() || std::get_if<Value::Array>(&value->data));
        return isContainer ? std::move(value) : std::nullopt; // a scalar is a value, but not a document
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::string NlohmannJson::serialise(const Value& value) {
    return std::visit(Conversion(), value.data).dump(-1, ' ', false, Writer::error_handler_t::replace);
}

} // namespace join::platform
