#include "BinaryPlist.hpp"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <plist/plist.h>
#include <string_view>
#include <unordered_map>

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

// Writes the "bplist00" format directly. libplist 2.2 can write it too,
// but it looks every object up in a hash table of 4096 fixed buckets to
// share equal values, which made a cache of 100,000 pictures take over two
// minutes to save. Here only dictionary keys are shared, through an
// ordinary hash map, and every other object is written where it stands,
// which the format allows; files are still read through libplist.
class Writer {
public:
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> write(const PlistValue& root) {
        collectKeys(root);
        std::uint64_t objects = keyOrder_.size() + countOf(root);
        referenceSize_ = bytesFor(objects);
        offsets_.assign(objects, 0);
        bytes_.assign(kMagic.begin(), kMagic.end());
        for (std::size_t i = 0; i < keyOrder_.size(); ++i) {
            offsets_[i] = bytes_.size();
            if (!appendString(*keyOrder_[i])) {
                return std::nullopt;
            }
        }
        std::uint64_t top = keyOrder_.size();
        if (!writeObject(root, top)) {
            return std::nullopt;
        }
        std::uint64_t tableOffset = bytes_.size();
        int offsetSize = bytesFor(tableOffset);
        for (std::uint64_t offset : offsets_) {
            appendNumber(offset, offsetSize);
        }
        bytes_.insert(bytes_.end(), 6, 0);
        bytes_.push_back(static_cast<std::uint8_t>(offsetSize));
        bytes_.push_back(static_cast<std::uint8_t>(referenceSize_));
        appendNumber(objects, 8);
        appendNumber(top, 8);
        appendNumber(tableOffset, 8);
        return std::move(bytes_);
    }

    static constexpr std::string_view kMagic = "bplist00";

private:
    // Dictionary keys come first, each distinct key once (every record
    // repeats the same field names); then the values, numbered depth first:
    // a container, then each child's whole subtree.
    void collectKeys(const PlistValue& value) {
        if (const auto* array = value.as<PlistValue::Array>()) {
            for (const PlistValue& item : *array) {
                collectKeys(item);
            }
        } else if (const auto* dictionary = value.as<PlistValue::Dictionary>()) {
            for (const auto& [key, item] : *dictionary) {
                if (keyIds_.try_emplace(key, keyOrder_.size()).second) {
                    keyOrder_.push_back(&key);
                }
                collectKeys(item);
            }
        }
    }

    static std::uint64_t countOf(const PlistValue& value) {
        std::uint64_t count = 1;
        if (const auto* array = value.as<PlistValue::Array>()) {
            for (const PlistValue& item : *array) {
                count += countOf(item);
            }
        } else if (const auto* dictionary = value.as<PlistValue::Dictionary>()) {
            for (const auto& entry : *dictionary) {
                count += countOf(entry.second);
            }
        }
        return count;
    }

    static int bytesFor(std::uint64_t largest) {
        if (largest <= 0xFF) {
            return 1;
        }
        if (largest <= 0xFFFF) {
            return 2;
        }
        return largest <= 0xFFFFFFFF ? 4 : 8;
    }

    void appendNumber(std::uint64_t value, int size) {
        for (int shift = (size - 1) * 8; shift >= 0; shift -= 8) {
            bytes_.push_back(static_cast<std::uint8_t>(value >> shift));
        }
    }

    void appendInteger(std::int64_t value) {
        // Only eight-byte integers are signed in this format.
        int size = value < 0 ? 8 : bytesFor(static_cast<std::uint64_t>(value));
        bytes_.push_back(
            static_cast<std::uint8_t>(0x10 | std::countr_zero(static_cast<unsigned>(size))));
        appendNumber(static_cast<std::uint64_t>(value), size);
    }

    void appendMarker(std::uint8_t kind, std::size_t count) {
        if (count < 15) {
            bytes_.push_back(static_cast<std::uint8_t>(kind | count));
        } else {
            bytes_.push_back(static_cast<std::uint8_t>(kind | 0x0F));
            appendInteger(static_cast<std::int64_t>(count));
        }
    }

    void appendReal(std::uint8_t marker, double value) {
        bytes_.push_back(marker);
        appendNumber(std::bit_cast<std::uint64_t>(value), 8);
    }

    // ASCII as it stands, anything else as UTF-16 big-endian.
    [[nodiscard]] bool appendString(const std::string& text) {
        if (std::ranges::all_of(text,
                                [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
            appendMarker(0x50, text.size());
            bytes_.insert(bytes_.end(), text.begin(), text.end());
            return true;
        }
        std::optional<std::vector<std::uint16_t>> units = utf16Of(text);
        if (!units) {
            return false;
        }
        appendMarker(0x60, units->size());
        for (std::uint16_t unit : *units) {
            appendNumber(unit, 2);
        }
        return true;
    }

    static std::optional<std::vector<std::uint16_t>> utf16Of(std::string_view text) {
        std::vector<std::uint16_t> units;
        std::size_t i = 0;
        while (i < text.size()) {
            auto lead = static_cast<unsigned char>(text[i]);
            int length = lead < 0x80           ? 1
                         : (lead >> 5) == 0x6  ? 2
                         : (lead >> 4) == 0xE  ? 3
                         : (lead >> 3) == 0x1E ? 4
                                               : 0;
            if (length == 0 || i + static_cast<std::size_t>(length) > text.size()) {
                return std::nullopt;
            }
            char32_t code = length == 1 ? lead : lead & (0x7F >> length);
            for (int k = 1; k < length; ++k) {
                auto next = static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]);
                if ((next & 0xC0) != 0x80) {
                    return std::nullopt;
                }
                code = (code << 6) | (next & 0x3F);
            }
            if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
                return std::nullopt;
            }
            if (code >= 0x10000) {
                code -= 0x10000;
                units.push_back(static_cast<std::uint16_t>(0xD800 | (code >> 10)));
                units.push_back(static_cast<std::uint16_t>(0xDC00 | (code & 0x3FF)));
            } else {
                units.push_back(static_cast<std::uint16_t>(code));
            }
            i += static_cast<std::size_t>(length);
        }
        return units;
    }

    // References to the children, whose subtrees follow one another from
    // number `first`, then the subtrees themselves.
    [[nodiscard]] bool appendChildren(const std::vector<const PlistValue*>& children,
                                      std::uint64_t first) {
        std::vector<std::uint64_t> ids;
        ids.reserve(children.size());
        std::uint64_t next = first;
        for (const PlistValue* child : children) {
            ids.push_back(next);
            appendNumber(next, referenceSize_);
            next += countOf(*child);
        }
        for (std::size_t i = 0; i < children.size(); ++i) {
            if (!writeObject(*children[i], ids[i])) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] bool writeObject(const PlistValue& value, std::uint64_t id) {
        offsets_[id] = bytes_.size();
        const PlistValue::Storage& storage = value.storage();
        if (const auto* flag = std::get_if<bool>(&storage)) {
            bytes_.push_back(*flag ? 0x09 : 0x08);
        } else if (const auto* integer = std::get_if<std::int64_t>(&storage)) {
            appendInteger(*integer);
        } else if (const auto* real = std::get_if<double>(&storage)) {
            appendReal(0x23, *real);
        } else if (const auto* date = std::get_if<Date>(&storage)) {
            appendReal(0x33, date->secondsSinceReferenceDate);
        } else if (const auto* text = std::get_if<std::string>(&storage)) {
            return appendString(*text);
        } else if (const auto* data = std::get_if<PlistValue::Data>(&storage)) {
            appendMarker(0x40, data->size());
            bytes_.insert(bytes_.end(), data->begin(), data->end());
        } else if (const auto* array = std::get_if<PlistValue::Array>(&storage)) {
            appendMarker(0xA0, array->size());
            std::vector<const PlistValue*> children;
            children.reserve(array->size());
            for (const PlistValue& item : *array) {
                children.push_back(&item);
            }
            return appendChildren(children, id + 1);
        } else if (const auto* dictionary = std::get_if<PlistValue::Dictionary>(&storage)) {
            appendMarker(0xD0, dictionary->size());
            std::vector<const PlistValue*> children;
            children.reserve(dictionary->size());
            for (const auto& [key, item] : *dictionary) {
                appendNumber(keyIds_.at(key), referenceSize_);
                children.push_back(&item);
            }
            return appendChildren(children, id + 1);
        }
        return true;
    }

    std::vector<std::uint8_t> bytes_;
    std::vector<std::uint64_t> offsets_;
    std::unordered_map<std::string_view, std::uint64_t> keyIds_;
    std::vector<const std::string*> keyOrder_;
    int referenceSize_ = 1;
};

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
    return Writer().write(value);
}

std::optional<PlistValue> BinaryPlist::decode(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view kMagic = Writer::kMagic;
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
