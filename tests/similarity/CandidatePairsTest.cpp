// The similarity index over a large synthetic library against the pairing
// rules applied to every pair the slow way.
#include "engine/similarity/FeatureExtractor.hpp"
#include "engine/similarity/SimilarityMatcher.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <fmt/format.h>
#include <map>
#include <random>

namespace brevant {
namespace {

// A scene's hashes in the eight orientations: turn t at t, turn t then
// mirrored at 4 + t.
using Orientations = std::array<std::uint64_t, 8>;

struct Library {
    std::vector<PhotoAsset> pictures;
    std::vector<std::optional<ImageFeatures>> features;
    // Where each picture lies, for the slow rules: folder number, seconds.
    std::vector<int> folders;
    std::vector<std::optional<double>> seconds;
};

struct Scene {
    Orientations hashes{};
    std::array<DetailHash, 8> details{};
    int width = 4000;
    int height = 3000;
};

// A library with every case the pairing rules tell apart: unrelated
// photos, clusters of near copies (some turned, cropped or squared, spread
// across the preset distances), bursts drifting shot by shot, and long
// bursts whose first and last shots are further apart in time than a
// minute yet close in looks. Some pictures have no date, a few were not
// measured and a few hold only one hash. With mirrors, records hold all
// eight orientations (a tenth only the four turns, as measured before
// mirroring was) and some near copies are mirrored; without, every record
// holds four turns and the draws are those of a library made before
// mirroring was measured.
class Planter {
public:
    Planter(unsigned seed, bool mirrors)
        : random_(seed)
        , mirrors_(mirrors) {}

    Library plant(int count) {
        for (int longBursts = 0; longBursts < 5; ++longBursts) {
            longBurst();
        }
        while (static_cast<int>(library_.pictures.size()) < count) {
            int kind = below(100);
            if (kind < 45) {
                add(scene(), 0, 0);
            } else if (kind < 80) {
                cluster();
            } else {
                burst();
            }
        }
        library_.pictures.resize(count);
        library_.features.resize(count);
        library_.folders.resize(count);
        library_.seconds.resize(count);
        return std::move(library_);
    }

private:
    int below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

    std::uint64_t flipped(std::uint64_t word, int flips) {
        for (int i = 0; i < flips; ++i) {
            word ^= 1ULL << below(64);
        }
        return word;
    }

    [[nodiscard]] int orientations() const { return mirrors_ ? 8 : 4; }

    Scene scene() {
        Scene s;
        for (int o = 0; o < orientations(); ++o) {
            s.hashes[o] = random_();
            s.details[o] = {random_(), random_(), random_(), random_()};
        }
        static constexpr std::array<std::pair<int, int>, 4> kShapes = {
            {{4000, 3000}, {3000, 4000}, {1920, 1080}, {1000, 1000}}};
        auto [w, h] = kShapes[below(4)];
        s.width = w;
        s.height = h;
        return s;
    }

    // Orientation o of a copy that is the scene turned `turn` quarters and
    // then mirrored (or not): o after that is one orientation of the scene.
    // Behind a mirror a turn goes the other way, and two mirrors cancel.
    static int composed(int o, bool mirror, int turn) {
        int oMirror = o / 4;
        int oTurn = o % 4;
        int quarter = mirror ? (turn - oTurn + 4) % 4 : (oTurn + turn) % 4;
        return 4 * (oMirror ^ static_cast<int>(mirror)) + quarter;
    }

    // The scene turned `turn` quarters, then mirrored or not, each hash with
    // up to `flips` bits changed.
    Scene copyOf(const Scene& s, int turn, int flips, bool mirror = false) {
        Scene copy = s;
        for (int o = 0; o < orientations(); ++o) {
            copy.hashes[o] = flipped(s.hashes[composed(o, mirror, turn)], below(flips + 1));
            copy.details[o] = s.details[composed(o, mirror, turn)];
            copy.details[o][0] = flipped(copy.details[o][0], below(16));
        }
        if (turn % 2 == 1) {
            std::swap(copy.width, copy.height);
        }
        if (below(10) == 0) {
            copy.height = copy.width * 9 / 16; // cropped
        } else if (below(20) == 0) {
            copy.height = copy.width; // squared
        }
        return copy;
    }

    void newFolder() {
        folder_ += 1;
        inFolder_ = 0;
    }

    // Moves to a new folder now and then, and on in time.
    void step(double seconds) {
        if (inFolder_ >= 150) {
            folder_ += 1;
            inFolder_ = 0;
        }
        inFolder_ += 1;
        clock_ += seconds;
    }

    void add(const Scene& s, double after, int folderShift) {
        step(after);
        int index = static_cast<int>(library_.pictures.size());
        int folder = folder_ + folderShift;
        PhotoAsset picture;
        picture.path = fmt::format("/library/{:05}/IMG_{:06}.JPG", folder, index);
        picture.snapshot.size = 2'000'000 + below(1'000'000);
        std::optional<double> seconds;
        if (below(10) != 0) {
            seconds = clock_;
        }
        std::optional<ImageFeatures> features;
        int kind = below(200);
        if (kind != 0) {
            ImageFeatures f;
            int measured = mirrors_ && below(10) != 0 ? 8 : 4;
            f.hashes.assign(s.hashes.begin(), s.hashes.begin() + measured);
            if (kind == 1) {
                f.hashes.resize(1); // an odd record from elsewhere
            }
            f.detailHashes.assign(s.details.begin(), s.details.begin() + measured);
            f.pixelWidth = s.width;
            f.pixelHeight = s.height;
            if (seconds) {
                f.captureDate = Date{*seconds};
            }
            features = std::move(f);
        }
        library_.seconds.push_back(features ? seconds : std::nullopt);
        library_.pictures.push_back(std::move(picture));
        library_.features.push_back(std::move(features));
        library_.folders.push_back(folder);
    }

    // Near copies: some shot right after one another, some in a backup
    // folder elsewhere.
    void cluster() {
        Scene original = scene();
        int copies = 2 + below(5);
        int flips = 3 + below(8);
        for (int i = 0; i < copies; ++i) {
            int turn = below(7) == 0 ? 1 + below(3) : 0;
            bool mirror = mirrors_ && below(4) == 0;
            add(copyOf(original, turn, flips, mirror), below(2) == 0 ? 1.0 : 200.0,
                below(3) == 0 ? 7 : 0);
        }
    }

    // Shots a second or few apart, each a few bits away from the last.
    void burst() {
        newFolder();
        Scene shot = scene();
        int shots = 3 + below(10);
        for (int i = 0; i < shots; ++i) {
            shot = copyOf(shot, 0, 6);
            add(shot, 0.5 + below(8) * 0.5, 0);
        }
        step(120);
    }

    // 81 shots a second apart in a folder of their own: shot i has the
    // lowest i / 4 bits changed, so shots at most a minute apart differ by
    // at most 15 bits and the first and last by 20 (sharing their upper
    // bytes). A shot without a date leaves a gap of two seconds, which
    // does not end the series.
    void longBurst() {
        newFolder();
        Scene base = scene();
        for (int i = 0; i <= 80; ++i) {
            Scene shot = base;
            shot.hashes[0] ^= (1ULL << (i / 4)) - 1;
            add(shot, 1.0, 0);
        }
        step(120);
    }

    std::mt19937_64 random_;
    bool mirrors_ = false;
    Library library_;
    int folder_ = 0;
    int inFolder_ = 0;
    double clock_ = 700'000'000.0;
};

struct Reference {
    std::vector<SimilarPair> pairs;
    std::int64_t proposed = 0;
};

[[gnu::always_inline]] inline int smaller(int x, int y) {
    return x < y ? x : y;
}

// A probed record's measured orientations: four turns, or eight.
using Measured = std::vector<std::uint64_t>;

[[gnu::always_inline]] inline int closest(std::uint64_t hash, const Measured& orientations) {
    int best = 64;
    for (std::uint64_t oriented : orientations) {
        best = smaller(best, std::popcount(hash ^ oriented));
    }
    return best;
}

[[gnu::always_inline]] inline bool sharesByte(const Measured& x, std::uint64_t y) {
    for (std::uint64_t turned : x) {
        for (int p = 0; p < 8; ++p) {
            if (((turned >> (8 * p)) & 0xFF) == ((y >> (8 * p)) & 0xFF)) {
                return true;
            }
        }
    }
    return false;
}

// Every pair of pictures, one by one. A pair is proposed by its hashes
// when one picture's unturned hash is within 20 bits of a measured
// orientation of the other's and an orientation of the first shares a byte
// position with the other's unturned hash (only records with all four turns
// or all eight orientations take part), or as time
// neighbours (one folder, both dated, at most 60 s apart). It is kept
// within 20 bits, or 34 for time neighbours.
[[gnu::target("popcnt")]] Reference referencePairs(const Library& library) {
    Reference result;
    auto n = static_cast<int>(library.pictures.size());
    std::vector<Measured> turns(n, Measured(1, 0));
    std::vector<bool> probed(n, false);
    // Undated pictures get folders of their own, so that they are nobody's
    // neighbour.
    std::vector<int> folder(n);
    std::vector<double> seconds(n, 0);
    for (int i = 0; i < n; ++i) {
        const auto& f = library.features[i];
        if (f && (f->hashes.size() == 4 || f->hashes.size() == 8)) {
            turns[i] = f->hashes;
            probed[i] = true;
        }
        folder[i] = library.seconds[i] ? library.folders[i] : -1 - i;
        seconds[i] = library.seconds[i].value_or(0);
    }
    for (int a = 0; a < n; ++a) {
        const Measured& ta = turns[a];
        for (int b = a + 1; b < n; ++b) {
            const Measured& tb = turns[b];
            bool close = closest(ta[0], tb) <= 20 || closest(tb[0], ta) <= 20;
            bool neighbours = folder[a] == folder[b] && std::abs(seconds[a] - seconds[b]) <= 60.0;
            if (!close && !neighbours) {
                continue;
            }
            bool hashed = close && probed[a] && probed[b] &&
                          ((closest(ta[0], tb) <= 20 && sharesByte(ta, tb[0])) ||
                           (closest(tb[0], ta) <= 20 && sharesByte(tb, ta[0])));
            if (!neighbours && !hashed) {
                continue;
            }
            result.proposed += 1;
            const auto& fa = *library.features[a];
            const auto& fb = *library.features[b];
            auto match = FeatureExtractor::hashMatch(fa, fb);
            if (match.distance > (neighbours ? 34 : 20)) {
                continue;
            }
            result.pairs.push_back(
                {.a = a,
                 .b = b,
                 .distance = static_cast<std::uint8_t>(match.distance),
                 .shapesAgree = FeatureExtractor::shapesAgree(fa, fb, match.turn % 2 == 1),
                 .detail = static_cast<std::int16_t>(FeatureExtractor::detailDistance(fa, fb))});
        }
    }
    return result;
}

// Where two lists of groups first differ, without printing thousands.
std::string firstDifference(const std::vector<DuplicateGroup>& found,
                            const std::vector<DuplicateGroup>& expected) {
    for (std::size_t i = 0; i < std::min(found.size(), expected.size()); ++i) {
        if (found[i] != expected[i]) {
            return fmt::format("group {} differs: {} ({} members, spread {}) against {} ({} "
                               "members, spread {})",
                               i, found[i].id, found[i].members.size(),
                               found[i].spread.value_or(-1), expected[i].id,
                               expected[i].members.size(), expected[i].spread.value_or(-1));
        }
    }
    return fmt::format("{} groups against {}", found.size(), expected.size());
}

// Without mirrors the library is the one planted before mirroring was
// measured, so its proposals and groups are those of the four turns.
class CandidatePairs : public ::testing::TestWithParam<bool> {};

TEST_P(CandidatePairs, FiftyThousandPlantedPicturesGroupAsEveryPairChecked) {
    if (__builtin_cpu_supports("popcnt") == 0) {
        GTEST_SKIP() << "the slow rules count bits with the population-count instruction";
    }
    int count = std::getenv("N") ? std::atoi(std::getenv("N")) : 50'000;
    Library library = Planter(25, GetParam()).plant(count);
    Reference reference = referencePairs(library);
    CancellationFlag cancel;
    auto index = SimilarityMatcher::index(library.pictures, library.features, {}, cancel);
    ASSERT_TRUE(index.has_value());
    SimilarityIndex everyPair(library.pictures, library.features, reference.pairs,
                              reference.proposed, {});

    EXPECT_EQ(index->candidatesProposed, reference.proposed);
    for (auto preset :
         {SimilarityPreset::conservative, SimilarityPreset::balanced, SimilarityPreset::broad}) {
        auto groups = index->groups(preset);
        EXPECT_GT(groups.size(), 1000u) << rawValue(preset);
        auto expected = everyPair.groups(preset);
        EXPECT_TRUE(groups == expected)
            << rawValue(preset) << ": " << firstDifference(groups, expected);
    }
    for (double window : {3.0, 10.0}) {
        auto series = index->series(window, 34.0);
        EXPECT_GT(series.size(), 500u) << window;
        auto expected = everyPair.series(window, 34.0);
        EXPECT_TRUE(series == expected) << window << ": " << firstDifference(series, expected);
    }
    // The long bursts are series whose spread comes from shots more than a
    // minute apart.
    auto series = index->series(3.0, 34.0);
    auto spreadOfTwenty = std::ranges::count_if(series, [](const DuplicateGroup& group) {
        return group.members.size() >= 60 && group.spread == 20.0f;
    });
    EXPECT_GE(spreadOfTwenty, 3);
    // Far fewer pairs are kept than every proposal within reach.
    EXPECT_LT(index->pairs.size() * 2, everyPair.pairs.size());
}

INSTANTIATE_TEST_SUITE_P(Orientations, CandidatePairs, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& info) {
                             return info.param ? "mirrorsMeasured" : "fourTurns";
                         });

} // namespace
} // namespace brevant
