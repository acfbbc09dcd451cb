#include "platform/linux/documents/NlohmannJson.h"

#include <nlohmann/json.hpp>

#include <limits>
#include <utility>

namespace join::platform {

namespace {

using Parser = nlohmann::json;

/// Builds the value from the parser's events. An event answered with false ends the parse.
class ValueBuilder : public nlohmann::json_sax<Parser> {
public:
    std::optional<Value> takeDocument() { return std::move(document_); }

    bool null() override { return add({}); }
    bool boolean(bool flag) override { return add({flag}); }
    bool number_integer(number_integer_t number) override { return add({std::int64_t{number}}); }
    bool number_unsigned(number_unsigned_t number) override {
        if (std::cmp_less_equal(number, std::numeric_limits<std::int64_t>::max()))
            return add({static_cast<std::int64_t>(number)});
        return add({static_cast<double>(number)});
    }
    bool number_float(number_float_t number, const string_t& /*text*/) override { return add({number}); }
    bool string(string_t& text) override { return add({std::move(text)}); }
    bool binary(binary_t& /*bytes*/) override { return false; }

    bool start_object(std::size_t /*count*/) override { return open({Value::Dictionary()}); }
    bool key(string_t& name) override {
        std::get<Value::Dictionary>(open_.back().data).push_back({std::move(name), {}});
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t /*count*/) override { return open({Value::Array()}); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        return false;
    }

private:
    bool open(Value container) {
        if (open_.size() == maximumValueDepth)
            return false;
        open_.push_back(std::move(container));
        return true;
    }

    bool close() {
        Value complete = std::move(open_.back());
        open_.pop_back();
        if (!open_.empty())
            return add(std::move(complete));
        document_ = std::move(complete);
        return true;
    }

    /// A value outside every container would be the document itself; one that is a scalar is none.
    bool add(Value value) {
        if (open_.empty())
            return false;
        auto& container = open_.back().data;
        if (auto* members = std::get_if<Value::Dictionary>(&container))
            members->back().value = std::move(value);
        else
            std::get<Value::Array>(container).push_back(std::move(value));
        return true;
    }

    std::vector<Value> open_; ///< the containers that have begun and not ended, outermost first
    std::optional<Value> document_;
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
    // The parser would take a NUL for the end of the document and overlook what follows it.
    if (document.find('\0') != std::string_view::npos)
        return std::nullopt;
    try {
        ValueBuilder builder;
        if (!Parser::sax_parse(document.begin(), document.end(), &builder))
            return std::nullopt;
        return builder.takeDocument();
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
