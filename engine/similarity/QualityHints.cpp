#include "QualityHints.hpp"

#include "engine/similarity/FaceCheck.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace brevant {

namespace {

struct Measured {
    const std::string* path;
    const ImageFeatures* features;
};

// Every member with its features, or nothing when one is unmeasured.
std::optional<std::vector<Measured>> measuredMembers(const DuplicateGroup& group,
                                                     const SimilarityIndex& index) {
    std::vector<Measured> members;
    members.reserve(group.members.size());
    for (const auto& member : group.members) {
        const ImageFeatures* features = index.featuresFor(member);
        if (features == nullptr) {
            return std::nullopt;
        }
        members.push_back({&member.path, features});
    }
    return members;
}

void addSharpest(const std::vector<Measured>& members, QualityHints::ByPath& hints) {
    auto bySharpness = members;
    std::ranges::sort(bySharpness, [](const Measured& x, const Measured& y) {
        return x.features->sharpness > y.features->sharpness;
    });
    double first = bySharpness[0].features->sharpness;
    double second = bySharpness[1].features->sharpness;
    if (second > 0 && second * QualityHints::kSharpnessMargin <= first) {
        hints[*bySharpness[0].path] = fmt::format(
            "Sharpest of the group ({:.1f}\u00D7 the next by edge contrast)", first / second);
    }
}

void addExposure(const std::vector<Measured>& members, QualityHints::ByPath& hints) {
    std::vector<double> lumas;
    lumas.reserve(members.size());
    for (const auto& member : members) {
        lumas.push_back(member.features->meanLuma);
    }
    std::ranges::sort(lumas);
    // The upper median for even counts.
    double usual = std::abs(lumas[lumas.size() / 2] - 0.5);
    for (const auto& member : members) {
        double luma = member.features->meanLuma;
        if (hints.contains(*member.path) ||
            std::abs(luma - 0.5) - usual < QualityHints::kExposureMargin) {
            continue;
        }
        hints[*member.path] = luma < 0.5 ? "Darker than the others" : "Brighter than the others";
    }
}

void addClipped(const std::vector<Measured>& members, QualityHints::ByPath& hints) {
    for (const auto& member : members) {
        if (hints.contains(*member.path)) {
            continue;
        }
        double leastOther = 1.0;
        for (const auto& other : members) {
            if (&other != &member) {
                leastOther = std::min(leastOther, other.features->clipped);
            }
        }
        double clipped = member.features->clipped;
        if (clipped - leastOther >= QualityHints::kClippedMargin) {
            hints[*member.path] =
                fmt::format("{:.0f}% of it is pure black or white", clipped * 100);
        }
    }
}

} // namespace

QualityHints::ByPath QualityHints::hints(const DuplicateGroup& group,
                                         const SimilarityIndex& index) {
    ByPath result;
    auto members = measuredMembers(group, index);
    if (group.members.size() < 2 || !members) {
        return result;
    }
    addSharpest(*members, result);
    addExposure(*members, result);
    addClipped(*members, result);
    return result;
}

std::unordered_map<std::string, int> QualityHints::scores(const DuplicateGroup& group,
                                                          const SimilarityIndex& index) {
    std::unordered_map<std::string, int> result;
    auto members = measuredMembers(group, index);
    if (group.members.size() < 2 || !members) {
        return result;
    }
    for (const auto& member : *members) {
        if (!member.features->qualityScore) {
            return {};
        }
        result[*member.path] = *member.features->qualityScore;
    }
    return result;
}

QualityHints::ByPath QualityHints::faceNotes(const DuplicateGroup& group,
                                             const SimilarityIndex& index) {
    ByPath result;
    auto members = measuredMembers(group, index);
    if (group.members.size() < 2 || !members) {
        return result;
    }
    for (const auto& member : *members) {
        const auto& reading = member.features->faces;
        if (!reading) {
            return {};
        }
        if (auto note = FaceCheck::notes(*reading)) {
            result[*member.path] = *note;
        }
    }
    return result;
}

} // namespace brevant
