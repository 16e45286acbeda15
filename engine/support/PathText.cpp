#include "PathText.hpp"

#include <cstdint>
#include <fmt/format.h>

namespace brevant::path_text {

namespace {

constexpr char32_t kEscapeBase = 0xEF00;

// Length of the valid UTF-8 sequence starting at `at`, or 0 when the bytes
// there do not form one (overlong forms and surrogates are invalid).
std::size_t sequenceLength(std::string_view s, std::size_t at, char32_t& codePoint) {
    auto byte = [&](std::size_t i) { return static_cast<unsigned char>(s[i]); };
    unsigned char lead = byte(at);
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    }
    std::size_t length = 0;
    char32_t value = 0;
    char32_t minimum = 0;
    if ((lead & 0xE0) == 0xC0) {
        length = 2;
        value = lead & 0x1F;
        minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        value = lead & 0x0F;
        minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        value = lead & 0x07;
        minimum = 0x10000;
    } else {
        return 0;
    }
    if (at + length > s.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        unsigned char next = byte(at + i);
        if ((next & 0xC0) != 0x80) {
            return 0;
        }
        value = (value << 6) | (next & 0x3F);
    }
    if (value < minimum || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        return 0;
    }
    codePoint = value;
    return length;
}

bool isEscapeCharacter(char32_t c) {
    return c >= kEscapeBase + 0x80 && c <= kEscapeBase + 0xFF;
}

void appendEscaped(std::string& out, unsigned char byte) {
    // U+EF80..U+EFFF as three UTF-8 bytes: EE BE/BF xx.
    char32_t c = kEscapeBase + byte;
    out.push_back(static_cast<char>(0xE0 | (c >> 12)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
}

} // namespace

bool isValidUtf8(std::string_view bytes) {
    char32_t c = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t length = sequenceLength(bytes, at, c);
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
}

std::string encode(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    char32_t c = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t length = sequenceLength(bytes, at, c);
        if (length == 0 || isEscapeCharacter(c)) {
            std::size_t count = length == 0 ? 1 : length;
            for (std::size_t i = 0; i < count; ++i) {
                appendEscaped(out, static_cast<unsigned char>(bytes[at + i]));
            }
            at += count;
            continue;
        }
        out.append(bytes.substr(at, length));
        at += length;
    }
    return out;
}

std::string decode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    char32_t c = 0;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t length = sequenceLength(text, at, c);
        if (length == 0) {
            // Not produced by encode; keep the byte rather than lose it.
            out.push_back(text[at]);
            ++at;
            continue;
        }
        if (isEscapeCharacter(c)) {
            out.push_back(static_cast<char>(c - kEscapeBase));
        } else {
            out.append(text.substr(at, length));
        }
        at += length;
    }
    return out;
}

std::string display(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    char32_t c = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t length = sequenceLength(bytes, at, c);
        if (length == 0) {
            out += fmt::format("\\x{:02X}", static_cast<unsigned char>(bytes[at]));
            ++at;
            continue;
        }
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c < 0x20 || c == 0x7F) {
            out += fmt::format("\\x{:02X}", static_cast<std::uint32_t>(c));
        } else {
            out.append(bytes.substr(at, length));
        }
        at += length;
    }
    return out;
}

} // namespace brevant::path_text
