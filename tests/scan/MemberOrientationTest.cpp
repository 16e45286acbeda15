#include "engine/scan/MemberOrientation.hpp"

#include "engine/scan/DuplicateGroup.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

namespace brevant {
namespace {

// The orientation a copy matched in is the way back to the first member;
// the copy is said the other way round: a quarter turn back is three
// forward, and a mirror is its own way back.
TEST(MemberOrientation, SaysTheCopyAsMadeFromTheFirstMember) {
    struct Case {
        int matched;
        bool mirrored;
        int degrees;
        std::string words;
    };

    const Case cases[] = {
        {0, false, 0, ""},
        {1, false, 270, "turned 270°"},
        {2, false, 180, "turned 180°"},
        {3, false, 90, "turned 90°"},
        {4, true, 0, "mirrored"},
        {5, true, 270, "mirrored, turned 270°"},
        {6, true, 180, "mirrored, turned 180°"},
        {7, true, 90, "mirrored, turned 90°"},
        {8, false, 0, ""},
        {-1, false, 0, ""},
    };
    for (const auto& [matched, mirrored, degrees, words] : cases) {
        MemberOrientation orientation = MemberOrientation::fromMatched(matched);
        EXPECT_EQ(orientation.mirrored, mirrored) << matched;
        EXPECT_EQ(orientation.degrees, degrees) << matched;
        EXPECT_EQ(orientation.words(), words) << matched;
        EXPECT_EQ(orientation.isUpright(), words.empty()) << matched;
    }
}

// Said on the member itself in a group's JSON, only where it is not
// upright, and read back.
TEST(MemberOrientation, RidesOnTheMembersOfAGroupsJson) {
    DuplicateGroup group;
    group.kind = MatchKind::similar;
    group.members.resize(2);
    group.members[0].path = "/p/a.jpg";
    group.members[1].path = "/p/b.jpg";
    group.orientations["/p/b.jpg"] = MemberOrientation{.mirrored = true, .degrees = 90};

    nlohmann::ordered_json j = group;
    EXPECT_FALSE(j["members"][0].contains("orientation"));
    EXPECT_EQ(j["members"][1]["orientation"].dump(), R"({"mirrored":true,"degrees":90})");
    auto back = j.get<DuplicateGroup>();
    EXPECT_EQ(back, group);
    EXPECT_EQ(back.orientationOf("/p/b.jpg").words(), "mirrored, turned 90°");
    EXPECT_TRUE(back.orientationOf("/p/a.jpg").isUpright());
}

} // namespace
} // namespace brevant
