#pragma once

#include <QString>

#include <cstdint>
#include <string>
#include <string_view>

namespace brevant::gui {

// Text between the engine (UTF-8 and raw path bytes) and Qt.

// UTF-8 text for display; invalid bytes show as replacement characters.
[[nodiscard]] QString qtText(std::string_view text);

// The file system's bytes of a path Qt handed us (a chooser, a drop).
[[nodiscard]] std::string pathBytes(const QString& path);

// "6.1 MB": decimal units, as desktop file managers show sizes.
[[nodiscard]] QString byteText(std::int64_t bytes);

// "1 group", "3 groups".
[[nodiscard]] QString countText(std::int64_t count, const char* one, const char* many);

// "under a second", "12 seconds", else as durationText.
[[nodiscard]] QString spanText(std::int64_t milliseconds);

// "0:07", "12:45", "1:02:03".
[[nodiscard]] QString durationText(std::int64_t milliseconds);

} // namespace brevant::gui
