#include "ContentTypes.hpp"

#include <gio/gio.h>
#include <string>

namespace brevant::platform {

namespace {

bool extensionIsA(std::string_view lowercasedExtension, const char* generic) {
    if (lowercasedExtension.empty()) {
        return false;
    }
    std::string name = "x." + std::string(lowercasedExtension);
    gboolean uncertain = FALSE;
    gchar* type = g_content_type_guess(name.c_str(), nullptr, 0, &uncertain);
    bool conforms = type != nullptr && g_content_type_is_a(type, generic);
    g_free(type);
    return conforms;
}

} // namespace

bool isImageExtension(std::string_view lowercasedExtension) {
    return extensionIsA(lowercasedExtension, "image/*");
}

bool isVideoExtension(std::string_view lowercasedExtension) {
    return extensionIsA(lowercasedExtension, "video/*");
}

bool isCameraRawType(std::string_view type) {
    std::string text(type);
    return g_content_type_is_a(text.c_str(), "image/x-dcraw") != FALSE;
}

} // namespace brevant::platform
