#include "CameraRaw.hpp"

#include "engine/platform/ReadOnlyFile.hpp"

#include <libraw/libraw.h>
#include <memory>

namespace brevant::platform {

namespace {

// LibRaw opens files by name. It is handed the name of the descriptor we
// opened without following links, so it reads exactly that file.
std::string descriptorPath(const ReadOnlyFile& file) {
    return "/proc/self/fd/" + std::to_string(file.descriptor());
}

struct Decoder {
    // LibRaw's object is large; keep it off the worker's stack.
    std::unique_ptr<LibRaw> raw = std::make_unique<LibRaw>(0);
    bool dataDamaged = false;

    Decoder() {
        // The default handler prints to standard error; note it instead.
        raw->set_dataerror_handler(
            [](void* data, const char*, int) { static_cast<Decoder*>(data)->dataDamaged = true; },
            this);
    }

    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    Decoder(Decoder&&) = delete;
    Decoder& operator=(Decoder&&) = delete;
    ~Decoder() = default;

    bool open(const ReadOnlyFile& file) const {
        return raw->open_file(descriptorPath(file).c_str()) == LIBRAW_SUCCESS;
    }
};

} // namespace

std::optional<PixelSize> CameraRaw::pixelSize(const std::string& path) {
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return std::nullopt;
    }
    Decoder decoder;
    if (!decoder.open(*file)) {
        return std::nullopt;
    }
    return PixelSize{decoder.raw->imgdata.sizes.width, decoder.raw->imgdata.sizes.height};
}

bool CameraRaw::decodesFully(const std::string& path) {
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return false;
    }
    Decoder decoder;
    return decoder.open(*file) && decoder.raw->unpack() == LIBRAW_SUCCESS &&
           decoder.raw->dcraw_process() == LIBRAW_SUCCESS && !decoder.dataDamaged;
}

} // namespace brevant::platform
