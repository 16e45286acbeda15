#include "ContentTypes.hpp"

#include <gio/gio.h>
#include <string>

namespace brevant::platform {

bool isImageExtension(std::string_view lowercasedExtension) {
    if (lowercasedExtension.empty()) {
        return false;
    }
    std::string name = "x." + std::string(lowercasedExtension);
    gboolean uncertain = FALSE;
    gchar* type = g_content_type_guess(name.c_str(), nullptr, 0, &uncertain);
    bool image = type != nullptr && g_content_type_is_a(type, "image/*");
    g_free(type);
    return image;
}

bool isCameraRawType(std::string_view type) {
    std::string text(type);
    return g_content_type_is_a(text.c_str(), "image/x-dcraw") != FALSE;
}

} // namespace brevant::platform
