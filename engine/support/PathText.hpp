#pragma once

#include <string>
#include <string_view>

namespace brevant::path_text {

// Linux file names are bytes, not text, but every file we store (JSON results,
// journals, the lock store) holds UTF-8 text. Names that are valid UTF-8 are
// stored unchanged. Any other byte (0x80-0xFF outside a valid sequence) is
// stored as the private-use character U+EF00 + byte; a real character in that
// range U+EF80-U+EFFF is stored byte by byte the same way, so decoding is exact
// for every possible name. Control characters such as a line feed are valid
// UTF-8 and JSON escapes them itself.

// The stored (always valid UTF-8) form of raw bytes.
[[nodiscard]] std::string encode(std::string_view bytes);

// The raw bytes back from a stored form.
[[nodiscard]] std::string decode(std::string_view text);

// True when the bytes are valid UTF-8 (and so stored unchanged unless they
// use the escape range).
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

// A one-line form for terminal output: control characters become \n, \t or
// \xNN and invalid bytes \xNN, so a name can never break a line of a report.
// Not meant to be decoded.
[[nodiscard]] std::string display(std::string_view bytes);

} // namespace brevant::path_text
