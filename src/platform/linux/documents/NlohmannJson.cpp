#include "platform/linux/documents/NlohmannJson.h"

#include "platform/linux/documents/ValueBuilder.h"

#include <nlohmann/json.hpp>

#include <limits>
#include <utility>

namespace join::platform {

namespace {

using Parser = nlohmann::json;

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

void append(std::string& text, const Parser& scalar) {
    text += scalar.dump(-1, ' ', false, Parser::error_handler_t::replace);
}

class Writer {
public:
    explicit Writer(std::string& text) : text_(text) {}

    void operator()(std::monostate /*null*/) { text_ += "null"; }
    void operator()(const Value::Array& elements) {
        writeList('[', elements, [this](const Value& element) { std::visit(*this, element.data); });
        text_ += ']';
    }
    void operator()(const Value::Dictionary& members) {
        writeList('{', members, [this](const Member& member) {
            append(text_, member.name);
            text_ += ':';
            std::visit(*this, member.value.data);
        });
        text_ += '}';
    }
    template <typename Scalar>
    void operator()(const Scalar& scalar) {
        append(text_, scalar);
    }

private:
    template <typename List, typename WriteItem>
    void writeList(char opening, const List& list, const WriteItem& writeItem) {
        text_ += opening;
        for (const auto& item : list) {
            if (&item != &list.front())
                text_ += ',';
            writeItem(item);
        }
    }

    std::string& text_;
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
    std::string text;
    std::visit(Writer(text), value.data);
    return text;
}

} // namespace join::platform
