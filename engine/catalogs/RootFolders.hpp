#pragma once

#include <string>
#include <unordered_set>
#include <vector>

namespace brevant {

// The folders a catalog's photos lie in, as the scan chooses them: each met
// folder resolved through its links once, however many photos it holds,
// and each resolved folder kept once, in the order first met.
class RootFolders {
public:
    void meet(const std::string& folder);

    [[nodiscard]] std::vector<std::string> take() { return std::move(folders_); }

private:
    std::unordered_set<std::string> met_;
    std::unordered_set<std::string> resolved_;
    std::vector<std::string> folders_;
};

} // namespace brevant
