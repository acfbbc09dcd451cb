#include "platform/linux/documents/PlistPropertyLists.h"

#include "platform/Utf8.h"
#include "platform/linux/documents/PlistGuard.h"

#include <plist/plist.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <type_traits>
#include <utility>

namespace join::platform {

namespace {

struct PlistFree {
    void operator()(plist_t node) const { plist_free(node); }
};
struct MallocFree {
    void operator()(void* memory) const { std::free(memory); }
};
using Plist = std::unique_ptr<std::remove_pointer_t<plist_t>, PlistFree>;
using Iterator = std::unique_ptr<void, MallocFree>;
using OwnedText = std::unique_ptr<char, MallocFree>;

Plist load(std::string_view bytes) {
    plist_t node = nullptr;
    if (plistFormOf(bytes) == PlistForm::binary) {
        plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    } else {
        bytes.remove_prefix(bytes.find('<')); // libplist knows no byte order mark
        plist_from_xml(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    }
    return Plist(node);
}

std::string dateText(plist_t node) {
    constexpr std::time_t referenceDate = 978'307'200; // 2001-01-01, where the dates of property lists begin
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    const std::time_t time = referenceDate + seconds;
    tm parts{};
    ::gmtime_r(&time, &parts);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S +0000", &parts)};
}

std::string dataText(plist_t node) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::uint64_t size = 0;
    const char* bytes = plist_get_data_ptr(node, &size);
    std::string text = "<";
    for (const char c : std::string_view(bytes, bytes ? size : 0)) {
        const auto byte = static_cast<unsigned char>(c);
        text.append({digits[byte >> 4U], digits[byte & 0xFU]});
    }
    return text += '>';
}

/// Gives one of libplist's numbers or flags through the function that reads it.
template <typename Number>
Number read(plist_t node, void (*get)(plist_t, Number*)) {
    Number number{};
    get(node, &number);
    return number;
}

std::optional<Value> valueOf(plist_t node, int depth);

std::optional<Value> textOf(plist_t node) {
    std::uint64_t size = 0;
    const char* bytes = plist_get_string_ptr(node, &size);
    if (!bytes)
        return Value{std::string()};
    std::string text(bytes, size);
    return isUtf8(text) ? std::optional(Value{std::move(text)}) : std::nullopt;
}

std::optional<Value> arrayOf(plist_t node, int depth) {
    Value::Array elements;
    plist_array_iter made = nullptr;
    plist_array_new_iter(node, &made);
    const Iterator iterator(made);
    for (;;) {
        plist_t item = nullptr;
        plist_array_next_item(node, iterator.get(), &item);
        if (!item)
            return Value{std::move(elements)};
        auto element = valueOf(item, depth + 1);
        if (!element)
            return std::nullopt;
        elements.push_back(std::move(*element));
    }
}

std::optional<Value> dictionaryOf(plist_t node, int depth) {
    Value::Dictionary members;
    plist_dict_iter made = nullptr;
    plist_dict_new_iter(node, &made);
    const Iterator iterator(made);
    for (;;) {
        char* name = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator.get(), &name, &item);
        const OwnedText ownedName(name);
        if (!name || !item)
            return Value{std::move(members)};
        auto value = valueOf(item, depth + 1);
        if (!value || !isUtf8(name))
            return std::nullopt;
        members.push_back({name, std::move(*value)});
    }
}

std::optional<Value> valueOf(plist_t node, int depth) {
    if (depth > maximumValueDepth)
        return std::nullopt;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return Value{read<std::uint8_t>(node, plist_get_bool_val) != 0};
    case PLIST_UINT:
        return Value{static_cast<std::int64_t>(read<std::uint64_t>(node, plist_get_uint_val))};
    case PLIST_REAL:
        return Value{read<double>(node, plist_get_real_val)};
    case PLIST_STRING:
        return textOf(node);
    case PLIST_ARRAY:
        return arrayOf(node, depth);
    case PLIST_DICT:
        return dictionaryOf(node, depth);
    case PLIST_DATE:
        return Value{dateText(node)};
    case PLIST_DATA:
        return Value{dataText(node)};
    case PLIST_UID:
        return Value{std::to_string(read<std::uint64_t>(node, plist_get_uid_val))};
    default:
        return Value{};
    }
}

} // namespace

std::optional<Value> PlistPropertyLists::parse(std::string_view bytes) {
    if (!isReasonablePropertyList(bytes))
        return std::nullopt;
    const Plist list = load(bytes);
    return list ? valueOf(list.get(), 1) : std::nullopt;
}

} // namespace join::platform
