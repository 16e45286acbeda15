#include "CatalogMarking.hpp"

#include "engine/catalogs/CaptureOneMarker.hpp"
#include "engine/catalogs/LightroomRejecter.hpp"

#include <algorithm>
#include <functional>

namespace brevant::cli {

std::vector<CatalogMarking> CatalogMarking::all() {
    std::vector<CatalogMarking> markings;
    for (auto& record : LightroomRejecter{LightroomRejecter::defaultRecordDirectory()}.history()) {
        markings.push_back({std::move(record)});
    }
    for (auto& record : CaptureOneMarker{CaptureOneMarker::defaultRecordDirectory()}.history()) {
        markings.push_back({std::move(record)});
    }
    std::ranges::stable_sort(markings, std::ranges::greater(), &CatalogMarking::date);
    return markings;
}

CatalogSource::Application CatalogMarking::application() const {
    return std::holds_alternative<LightroomMarkRecord>(record)
               ? CatalogSource::Application::lightroom
               : CatalogSource::Application::captureOne;
}

Uuid CatalogMarking::id() const {
    return std::visit([](const auto& one) { return one.id; }, record);
}

Date CatalogMarking::date() const {
    return std::visit([](const auto& one) { return one.date; }, record);
}

std::size_t CatalogMarking::count() const {
    return std::visit([](const auto& one) { return one.marked.size(); }, record);
}

bool CatalogMarking::restored() const {
    return std::visit([](const auto& one) { return one.restored; }, record);
}

std::string CatalogMarking::catalog() const {
    return std::visit([](const auto& one) { return one.catalogPath; }, record);
}

json::Json CatalogMarking::document() const {
    bool lightroom = application() == CatalogSource::Application::lightroom;
    return {{"application", lightroom ? "lightroomClassic" : "captureOne"},
            {"record", std::visit([](const auto& one) { return json::Json(one); }, record)}};
}

std::string CatalogMarking::undo() const {
    if (const auto* lightroom = std::get_if<LightroomMarkRecord>(&record)) {
        auto restored =
            LightroomRejecter{LightroomRejecter::defaultRecordDirectory()}.restore(*lightroom);
        return restored ? "" : restored.error().text();
    }
    const auto& captureOne = std::get<CaptureOneMarkRecord>(record);
    auto restored =
        CaptureOneMarker{CaptureOneMarker::defaultRecordDirectory()}.restore(captureOne);
    return restored ? "" : restored.error().text();
}

} // namespace brevant::cli
