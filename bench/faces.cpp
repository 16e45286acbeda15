// Times the face check over 100 photos.
//
//   bench_faces [--photos N] [--from FOLDER]
//   bench_faces --truth 1 [--from FOLDER]
//   bench_faces --free LIST [--library FOLDER]
//
// The photos are the labelled portraits and group photos of the shared test
// data (FOLDER, default ../shared/testdata/faces), taken in turn until N
// are read; without them, generated 4000x3000 scenes without people stand in.
// Each photo is decoded upright to at most 1600 pixels and read by the face,
// eye and smile detectors, four at a time as the application does.
//
// With --truth, each labelled photo is read once and compared with what a
// person saw (FOLDER/ground_truth.csv): faces, eyes closed, smiling.
//
// With --free, each photo of LIST (one path a line, relative to the shared
// test data; bench/face-free-photos.txt lists its landscapes, flowers,
// animals and objects, every photo without a person in it) and every
// picture under FOLDER (such as a sample library from make-sample-library)
// is read once; any face found there is a false reading.
#include "tests/fixtures/ImageFixtures.hpp"

#include "engine/scan/CancellationFlag.hpp"
#include "engine/similarity/FaceCheck.hpp"
#include "engine/support/ParallelMap.hpp"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::vector<std::string> photosIn(const std::string& folder) {
    std::vector<std::string> photos;
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(folder, ec);
         it != fs::recursive_directory_iterator(); it.increment(ec)) {
        auto extension = it->path().extension().string();
        std::ranges::transform(extension, extension.begin(),
                               [](unsigned char c) { return std::tolower(c); });
        if (extension == ".jpg" || extension == ".jpeg" || extension == ".png" ||
            extension == ".heic") {
            photos.push_back(it->path().string());
        }
    }
    std::ranges::sort(photos);
    return photos;
}

struct Truth {
    std::string file;
    std::string faces;
    std::string eyesClosed;
    std::string smiling;
};

std::vector<Truth> groundTruth(const std::string& folder) {
    std::vector<Truth> rows;
    std::ifstream csv(folder + "/ground_truth.csv");
    std::string line;
    std::getline(csv, line);
    while (std::getline(csv, line)) {
        std::stringstream fields(line);
        Truth row;
        std::string category;
        std::getline(fields, row.file, ',');
        std::getline(fields, category, ',');
        std::getline(fields, row.faces, ',');
        std::getline(fields, row.eyesClosed, ',');
        std::getline(fields, row.smiling, ',');
        rows.push_back(row);
    }
    return rows;
}

// Counts of photos where the detector and the person agree exactly.
int compareWithTruth(const std::string& folder) {
    auto rows = groundTruth(folder);
    int facesAgree = 0;
    int eyesAgree = 0;
    int smilesAgree = 0;
    int judged = 0;
    int personFaces = 0;
    int detectorFaces = 0;
    for (const auto& row : rows) {
        auto reading = brevant::FaceCheck::reading(folder + "/" + row.file);
        if (!reading) {
            fmt::print("{:<46} no reading\n", row.file);
            continue;
        }
        personFaces += std::atoi(row.faces.c_str());
        detectorFaces += reading->faces;
        bool sameFaces = row.faces == std::to_string(reading->faces);
        facesAgree += sameFaces ? 1 : 0;
        if (sameFaces && row.eyesClosed != "?" && row.smiling != "?") {
            judged += 1;
            eyesAgree += row.eyesClosed == std::to_string(reading->eyesClosed) ? 1 : 0;
            smilesAgree += row.smiling == std::to_string(reading->smiling) ? 1 : 0;
        }
        fmt::print("{:<46} person {}/{}/{}  detector {}/{}/{}\n", row.file, row.faces,
                   row.eyesClosed, row.smiling, reading->faces, reading->eyesClosed,
                   reading->smiling);
    }
    fmt::print("faces as a person counts them: {} of {} photos; of the {} photos with the same "
               "faces, eyes closed agree in {}, smiles in {}; {} faces found where a person "
               "counts {}\n",
               facesAgree, rows.size(), judged, eyesAgree, smilesAgree, detectorFaces, personFaces);
    return rows.empty() ? 1 : 0;
}

// Photos without a face that read as having faces.
int countFalseReadings(const std::vector<std::string>& photos) {
    brevant::CancellationFlag cancel;
    auto readings = brevant::parallelMap(
        photos, cancel, [](const std::string& path) { return brevant::FaceCheck::reading(path); });
    int read = 0;
    int falseReadings = 0;
    int faces = 0;
    for (std::size_t i = 0; i < photos.size(); ++i) {
        const auto& reading = readings[i];
        if (!reading || !*reading) {
            continue;
        }
        read += 1;
        if ((*reading)->faces > 0) {
            falseReadings += 1;
            faces += (*reading)->faces;
            fmt::print("{:<70} {} face(s), {} with eyes closed\n", photos[i], (*reading)->faces,
                       (*reading)->eyesClosed);
        }
    }
    fmt::print("false readings: {} of {} photos without a face read ({:.1f} %), {} faces in "
               "all; {} could not be read\n",
               falseReadings, read, read > 0 ? 100.0 * falseReadings / read : 0.0, faces,
               photos.size() - read);
    return read > 0 ? 0 : 1;
}

std::vector<std::string> listedPhotos(const std::string& list, const std::string& base) {
    std::vector<std::string> photos;
    std::ifstream in(list);
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        photos.push_back(line.front() == '/' ? line : base + "/" + line);
    }
    return photos;
}

} // namespace

int main(int argc, char** argv) {
    int count = 100;
    bool truth = false;
    std::string folder = BREVANT_SOURCE_DIR "/../shared/testdata/faces";
    std::string freeList;
    std::string library;
    for (int i = 1; i + 1 < argc; i += 2) {
        std::string flag = argv[i];
        if (flag == "--photos") {
            count = std::atoi(argv[i + 1]);
        } else if (flag == "--from") {
            folder = argv[i + 1];
        } else if (flag == "--truth") {
            truth = std::atoi(argv[i + 1]) != 0;
        } else if (flag == "--free") {
            freeList = argv[i + 1];
        } else if (flag == "--library") {
            library = argv[i + 1];
        }
    }
    if (!freeList.empty() || !library.empty()) {
        std::vector<std::string> photos =
            freeList.empty() ? std::vector<std::string>{}
                             : listedPhotos(freeList, BREVANT_SOURCE_DIR "/../shared/testdata");
        if (!library.empty()) {
            std::ranges::copy(photosIn(library), std::back_inserter(photos));
        }
        return countFalseReadings(photos);
    }
    if (truth) {
        return compareWithTruth(folder);
    }
    std::vector<std::string> sources = photosIn(folder);
    std::string scratch;
    if (sources.empty()) {
        scratch = (fs::temp_directory_path() / "brevant-bench-faces").string();
        for (unsigned seed = 0; seed < 10; ++seed) {
            sources.push_back(brevant::testing::writeScene(
                fmt::format("{}/scene-{}.jpg", scratch, seed), 4000, 3000, seed));
        }
    }
    std::vector<std::string> photos;
    for (int i = 0; i < count; ++i) {
        photos.push_back(sources[i % sources.size()]);
    }

    brevant::CancellationFlag cancel;
    auto start = std::chrono::steady_clock::now();
    auto readings = brevant::parallelMap(
        photos, cancel, [](const std::string& path) { return brevant::FaceCheck::reading(path); });
    double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    int faces = 0;
    int read = 0;
    for (const auto& reading : readings) {
        if (reading && *reading) {
            read += 1;
            faces += (*reading)->faces;
        }
    }
    fmt::print("face check: {} photos ({} distinct, from {}) in {:.2f} s, {:.1f} photos/s, "
               "{:.0f} ms a photo on one of 4 workers; {} read, {} faces found\n",
               photos.size(), sources.size(), scratch.empty() ? folder : "generated scenes",
               seconds, photos.size() / seconds, seconds * 1000 * 4 / photos.size(), read, faces);
    if (!scratch.empty()) {
        std::error_code ec;
        fs::remove_all(scratch, ec);
    }
    return read == count ? 0 : 1;
}
