// Writes a small, realistic photo folder for trying Brevant out and for the
// report's end-to-end test. The same build always writes the same pictures.
//
//   make-sample-library FOLDER
//
// FOLDER must not exist yet: the tool never writes over anything.
//
// What is inside:
//   Holidays/  originals, a resized copy, a quarter-turned copy, an XMP
//              sidecar and a Live Photo pair (HEIC + MOV)
//   Backup/    byte-for-byte copies of two originals
//   Exports/   a JPEG re-saved at quality 60, a darker edit and a 16:9 crop
//   Burst/     four frames one second apart, the subject moving
//   Others/    unrelated pictures
#include "tests/fixtures/ImageFixtures.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vips/vips8>

namespace {

namespace fs = std::filesystem;
using brevant::testing::makeScene;
using brevant::testing::saveImage;
using brevant::testing::SaveOptions;
using vips::VImage;

constexpr int kWidth = 1600;
constexpr int kHeight = 1200;

std::string gRoot;

std::string at(const std::string& relative) {
    return gRoot + "/" + relative;
}

void copyBytes(const std::string& from, const std::string& to) {
    std::error_code ec;
    fs::copy_file(at(from), at(to), ec);
    if (ec) {
        throw std::runtime_error("copy " + from + ": " + ec.message());
    }
}

void writeText(const std::string& relative, const std::string& text) {
    std::ofstream out(at(relative), std::ios::binary);
    out << text;
}

SaveOptions dated(const std::string& date) {
    return SaveOptions{.quality = 88, .exifDate = date};
}

// A frame of a burst: the scene with a subject that moves a little. Each
// frame is drawn on a fresh scene, as drawing changes an image in place.
VImage burstFrame(int frame) {
    VImage image = makeScene(kWidth, kHeight, 106);
    int x = 500 + frame * 60;
    int y = 650 - frame * 25;
    image.draw_circle({200, 40, 50}, x, y, 150, VImage::option()->set("fill", true));
    image.draw_circle({250, 230, 210}, x + 40, y - 60, 45, VImage::option()->set("fill", true));
    return image;
}

void makeLibrary() {
    for (const char* folder : {"Holidays", "Backup", "Exports", "Burst", "Others"}) {
        fs::create_directories(at(folder));
    }

    // Originals.
    VImage beach = makeScene(kWidth, kHeight, 101);
    saveImage(beach, at("Holidays/IMG_1001.JPG"), dated("2023:07:04 10:00:00"));
    VImage harbour = makeScene(kWidth, kHeight, 102);
    saveImage(harbour, at("Holidays/IMG_1002.JPG"), dated("2023:07:04 11:15:00"));
    VImage market = makeScene(kWidth, kHeight, 103);
    saveImage(market, at("Holidays/IMG_1003.JPG"), dated("2023:07:05 09:30:00"));
    VImage hills = makeScene(kWidth, kHeight, 104);
    saveImage(hills, at("Holidays/IMG_1004.JPG"), dated("2023:07:05 16:45:00"));
    saveImage(makeScene(1200, 900, 105), at("Holidays/IMG_1005.HEIC"),
              dated("2023:07:06 19:20:00"));

    // Exact copies in a second folder.
    copyBytes("Holidays/IMG_1001.JPG", "Backup/IMG_1001.JPG");
    copyBytes("Holidays/IMG_1003.JPG", "Backup/IMG_1003.JPG");

    // Other versions of the same photos.
    saveImage(beach.resize(0.5), at("Holidays/IMG_1001 small.jpg"), {.quality = 85});
    saveImage(harbour, at("Exports/IMG_1002 web.jpg"), {.quality = 60});
    saveImage((beach * 0.55).cast(VIPS_FORMAT_UCHAR), at("Exports/IMG_1001 evening.jpg"),
              {.quality = 88});
    saveImage(market.rot90(), at("Holidays/IMG_1003 turned.jpg"), {.quality = 88});
    int cropHeight = kWidth * 9 / 16;
    saveImage(hills.extract_area(0, (kHeight - cropHeight) / 2, kWidth, cropHeight),
              at("Exports/IMG_1004 wide.jpg"), {.quality = 88});

    // A burst, one second apart.
    for (int frame = 0; frame < 4; ++frame) {
        saveImage(burstFrame(frame), at(fmt::format("Burst/IMG_200{}.JPG", frame + 1)),
                  dated(fmt::format("2023:07:07 12:00:0{}", frame)));
    }

    // Unrelated pictures.
    for (int i = 0; i < 4; ++i) {
        saveImage(makeScene(kWidth, kHeight, 200 + i),
                  at(fmt::format("Others/IMG_300{}.JPG", i + 1)),
                  dated(fmt::format("2023:08:0{} 08:00:00", i + 1)));
    }

    // Files that belong with pictures.
    writeText("Holidays/IMG_1002.xmp",
              "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
              "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"/></x:xmpmeta>\n");
    writeText("Holidays/IMG_1005.MOV", std::string("\0\0\0\x14"
                                                   "ftypqt  ",
                                                   12));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr,
                     "usage: make-sample-library FOLDER (a folder that does not exist yet)\n");
        return 2;
    }
    gRoot = fs::absolute(argv[1]).lexically_normal().string();
    std::error_code ec;
    if (fs::exists(fs::symlink_status(gRoot, ec))) {
        std::fprintf(stderr, "make-sample-library: %s already exists; give a new folder.\n",
                     gRoot.c_str());
        return 2;
    }
    if (::mkdir(gRoot.c_str(), 0755) != 0) {
        std::fprintf(stderr, "make-sample-library: cannot create %s: %s\n", gRoot.c_str(),
                     std::strerror(errno));
        return 1;
    }
    try {
        makeLibrary();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "make-sample-library: %s\n", e.what());
        return 1;
    }
    std::printf("%s\n", gRoot.c_str());
    return 0;
}
