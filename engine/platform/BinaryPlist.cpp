#include "BinaryPlist.hpp"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <plist/plist.h>
#include <string_view>

namespace brevant::platform {

namespace {

// Deeper nesting than any file of ours can hold means damage.
constexpr int kMaxDepth = 32;

struct NodeFree {
    void operator()(void* node) const { plist_free(node); }
};

using Node = std::unique_ptr<void, NodeFree>;

struct MemoryFree {
    void operator()(char* memory) const { std::free(memory); }
};

using Memory = std::unique_ptr<char, MemoryFree>;

Node nodeOf(const PlistValue& value);

struct NodeMaker {
    Node operator()(bool value) const { return Node(plist_new_bool(value ? 1 : 0)); }

    Node operator()(std::int64_t value) const {
        return Node(plist_new_uint(static_cast<std::uint64_t>(value)));
    }

    Node operator()(double value) const { return Node(plist_new_real(value)); }

    Node operator()(const std::string& value) const {
        return Node(plist_new_string(value.c_str()));
    }

    Node operator()(const PlistValue::Data& value) const {
        return Node(plist_new_data(reinterpret_cast<const char*>(value.data()), value.size()));
    }

    Node operator()(const Date& value) const {
        double whole = std::floor(value.secondsSinceReferenceDate);
        auto micro =
            static_cast<std::int32_t>(std::lround((value.secondsSinceReferenceDate - whole) * 1e6));
        return Node(plist_new_date(static_cast<std::int32_t>(whole), micro));
    }

    Node operator()(const PlistValue::Array& value) const {
        Node array(plist_new_array());
        for (const PlistValue& item : value) {
            plist_array_append_item(array.get(), nodeOf(item).release());
        }
        return array;
    }

    Node operator()(const PlistValue::Dictionary& value) const {
        Node dictionary(plist_new_dict());
        for (const auto& [key, item] : value) {
            plist_dict_set_item(dictionary.get(), key.c_str(), nodeOf(item).release());
        }
        return dictionary;
    }
};

Node nodeOf(const PlistValue& value) {
    return std::visit(NodeMaker{}, value.storage());
}

std::optional<PlistValue> valueOf(plist_t node, int depth) {
    if (node == nullptr || depth > kMaxDepth) {
        return std::nullopt;
    }
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return PlistValue(value != 0);
    }
    case PLIST_UINT: {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return PlistValue(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return PlistValue(value);
    }
    case PLIST_STRING: {
        char* raw = nullptr;
        plist_get_string_val(node, &raw);
        Memory text(raw);
        return text ? PlistValue(std::string(text.get())) : PlistValue(std::string());
    }
    case PLIST_DATA: {
        char* raw = nullptr;
        std::uint64_t length = 0;
        plist_get_data_val(node, &raw, &length);
        Memory data(raw);
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(data.get());
        return PlistValue(bytes ? PlistValue::Data(bytes, bytes + length) : PlistValue::Data());
    }
    case PLIST_DATE: {
        std::int32_t seconds = 0;
        std::int32_t micro = 0;
        plist_get_date_val(node, &seconds, &micro);
        return PlistValue(Date{static_cast<double>(seconds) + static_cast<double>(micro) / 1e6});
    }
    case PLIST_ARRAY: {
        PlistValue::Array array;
        std::uint32_t size = plist_array_get_size(node);
        array.reserve(size);
        for (std::uint32_t i = 0; i < size; ++i) {
            std::optional<PlistValue> item = valueOf(plist_array_get_item(node, i), depth + 1);
            if (!item) {
                return std::nullopt;
            }
            array.push_back(std::move(*item));
        }
        return PlistValue(std::move(array));
    }
    case PLIST_DICT: {
        PlistValue::Dictionary dictionary;
        dictionary.reserve(plist_dict_get_size(node));
        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(node, &iterator);
        Memory iteratorMemory(static_cast<char*>(iterator));
        for (;;) {
            char* rawKey = nullptr;
            plist_t item = nullptr;
            plist_dict_next_item(node, iterator, &rawKey, &item);
            Memory key(rawKey);
            if (item == nullptr) {
                break;
            }
            std::optional<PlistValue> value = valueOf(item, depth + 1);
            if (!value || !key) {
                return std::nullopt;
            }
            dictionary.emplace_back(std::string(key.get()), std::move(*value));
        }
        return PlistValue(std::move(dictionary));
    }
    case PLIST_KEY:
    case PLIST_UID:
    case PLIST_NONE:
        return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::vector<std::uint8_t>> BinaryPlist::encode(const PlistValue& value) {
    Node root = nodeOf(value);
    char* raw = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root.get(), &raw, &length);
    if (raw == nullptr) {
        return std::nullopt;
    }
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(raw);
    std::vector<std::uint8_t> result(bytes, bytes + length);
    plist_to_bin_free(raw);
    return result;
}

std::optional<PlistValue> BinaryPlist::decode(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view kMagic = "bplist00";
    if (bytes.size() < kMagic.size() || bytes.size() > std::numeric_limits<std::uint32_t>::max() ||
        std::memcmp(bytes.data(), kMagic.data(), kMagic.size()) != 0) {
        return std::nullopt;
    }
    plist_t raw = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::uint32_t>(bytes.size()), &raw);
    Node root(raw);
    return valueOf(root.get(), 0);
}

} // namespace brevant::platform
