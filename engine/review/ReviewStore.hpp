#pragma once

#include "engine/review/SavedReview.hpp"
#include "engine/support/Date.hpp"

#include <cstddef>
#include <expected>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// The reviews the user left, kept across runs in reviews.json: one per set
// of folders and scan mode, newest first, so that scanning the same folders
// again takes the marks back and the window can offer the last one. Losing
// it costs the user some clicks, never a picture: a file that cannot be read
// is moved aside at once ("<name>.damaged-<seconds since 1970>") and the
// store starts empty; when even that fails nothing is written over it.
class ReviewStore {
public:
    using Clock = std::function<Date()>;

    // Older reviews beyond this many are forgotten.
    static constexpr std::size_t kKept = 20;

    // Without a path the reviews live in memory only.
    explicit ReviewStore(std::optional<std::string> path, Clock clock = Date::now);

    ReviewStore(const ReviewStore&) = delete;
    ReviewStore& operator=(const ReviewStore&) = delete;
    ReviewStore(ReviewStore&&) = delete;
    ReviewStore& operator=(ReviewStore&&) = delete;
    ~ReviewStore() = default;

    // One JSON array of {"folders", "mode", "preset", "saved" (seconds since
    // 2001), "marks": [{"path", "snapshot"}], "reviewed": [{"id",
    // "members": [{"path", "snapshot"}]}]}; paths through path_text.
    [[nodiscard]] static std::string encode(const std::vector<SavedReview>& reviews);
    [[nodiscard]] static std::expected<std::vector<SavedReview>, std::string>
    decode(std::string_view document);

    // Where a damaged file was moved at opening, when one was.
    [[nodiscard]] const std::optional<std::string>& setAsideTo() const { return setAsideTo_; }

    [[nodiscard]] std::optional<SavedReview> find(const std::vector<std::string>& folders,
                                                  ScanMode::Kind kind) const;
    // The most recently saved review, if any.
    [[nodiscard]] std::optional<SavedReview> latest() const;
    [[nodiscard]] std::vector<SavedReview> all() const;

    // Puts the review first in place of the one of the same folders and
    // mode; false when it could not be written.
    [[nodiscard]] bool save(SavedReview review);

private:
    void load();

    std::optional<std::string> path_;
    Clock clock_;
    // Set when the file could be neither read nor moved aside.
    bool damaged_ = false;
    std::optional<std::string> setAsideTo_;
    mutable std::mutex mutex_;
    std::vector<SavedReview> reviews_;
};

} // namespace brevant
