// Journals are read back after crashes, from disks that may damage them: any
// bytes must give a journal or none, never a crash, and what is read must
// write and read back the same.
#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/cleanup/CleanupReport.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

using brevant::CleanupJournal;
using brevant::CleanupReport;

void checkRoundTrip(const CleanupJournal::Parsed& parsed) {
    auto planLine = CleanupJournal::Entry::ofPlan(parsed.plan, parsed.started).encoded();
    auto plan = CleanupJournal::Entry::decode(planLine);
    if (!plan || plan->plan != parsed.plan || plan->at != parsed.started ||
        planLine.find('\n') != std::string::npos) {
        __builtin_trap();
    }
    CleanupReport report = CleanupJournal::reportOf(parsed, "/journals/cleanup-fuzz.jsonl");
    if (report.items.size() != parsed.plan.removals.size()) {
        __builtin_trap();
    }
    auto again = CleanupReport::decode(report.encoded());
    if (!again || !(*again == report)) {
        __builtin_trap();
    }
    (void)report.freedBytes();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view contents(reinterpret_cast<const char*>(data), size);
    auto parsed = CleanupJournal::parseContents(contents);
    if (parsed) {
        checkRoundTrip(*parsed);
        // Whatever follows the last line feed is a torn line: cutting it off
        // must not lose the plan.
        auto whole = contents.substr(0, contents.rfind('\n') + 1);
        (void)CleanupJournal::parseContents(whole);
    }
    return 0;
}
