#include "Json.hpp"

#include "engine/support/PathText.hpp"

namespace brevant::json {

const Json& field(const Json& j, std::string_view key) {
    if (!j.is_object()) {
        throw DecodeError("expected an object");
    }
    auto it = j.find(key);
    if (it == j.end()) {
        throw DecodeError("missing key \"" + std::string(key) + "\"");
    }
    return *it;
}

bool has(const Json& j, std::string_view key) {
    auto it = j.find(key);
    return it != j.end() && !it->is_null();
}

Json text(std::string_view s) {
    return Json(path_text::encode(s));
}

std::string toText(const Json& j) {
    return path_text::decode(j.get<std::string>());
}

std::string getText(const Json& j, std::string_view key) {
    return toText(field(j, key));
}

void putOptionalText(Json& j, std::string_view key, const std::optional<std::string>& s) {
    if (s) {
        j[std::string(key)] = text(*s);
    }
}

std::optional<std::string> getOptionalText(const Json& j, std::string_view key) {
    if (!has(j, key)) {
        return std::nullopt;
    }
    return getText(j, key);
}

Json textList(const std::vector<std::string>& list) {
    Json array = Json::array();
    for (const auto& s : list) {
        array.push_back(text(s));
    }
    return array;
}

std::vector<std::string> getTextList(const Json& j, std::string_view key) {
    std::vector<std::string> list;
    for (const auto& item : field(j, key)) {
        list.push_back(toText(item));
    }
    return list;
}

Json date(Date d) {
    return Json(d.secondsSinceReferenceDate);
}

Date getDate(const Json& j, std::string_view key) {
    return Date{field(j, key).get<double>()};
}

void putOptionalDate(Json& j, std::string_view key, const std::optional<Date>& d) {
    if (d) {
        j[std::string(key)] = date(*d);
    }
}

std::optional<Date> getOptionalDate(const Json& j, std::string_view key) {
    if (!has(j, key)) {
        return std::nullopt;
    }
    return getDate(j, key);
}

Json parse(std::string_view document) {
    try {
        return Json::parse(document);
    } catch (const nlohmann::json::exception& e) {
        throw DecodeError(e.what());
    }
}

} // namespace brevant::json
