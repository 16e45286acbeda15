#include "ItemOutcome.hpp"

#include "engine/support/Json.hpp"

#include <ostream>

namespace brevant {

namespace {

constexpr std::string_view kTrashPathKey = "trashPath";
constexpr std::string_view kIdentityKey = "identity";
// The key of an unnamed payload.
constexpr std::string_view kPayloadKey = "_0";

ItemOutcome withText(ItemOutcome::Kind kind, std::string text) {
    ItemOutcome outcome;
    outcome.kind = kind;
    outcome.text = std::move(text);
    return outcome;
}

} // namespace

ItemOutcome ItemOutcome::movedToTrash(std::optional<std::string> trashPath,
                                      std::optional<FileIdentity> identity) {
    ItemOutcome outcome;
    outcome.kind = Kind::movedToTrash;
    outcome.trashPath = std::move(trashPath);
    outcome.identity = identity;
    return outcome;
}

ItemOutcome ItemOutcome::skipped(std::string text) {
    return withText(Kind::skipped, std::move(text));
}

ItemOutcome ItemOutcome::failed(std::string text) {
    return withText(Kind::failed, std::move(text));
}

ItemOutcome ItemOutcome::unknown(std::string text) {
    return withText(Kind::unknown, std::move(text));
}

ItemOutcome ItemOutcome::restored(std::string text) {
    return withText(Kind::restored, std::move(text));
}

std::string_view rawValue(ItemOutcome::Kind kind) {
    switch (kind) {
    case ItemOutcome::Kind::movedToTrash:
        return "movedToTrash";
    case ItemOutcome::Kind::skipped:
        return "skipped";
    case ItemOutcome::Kind::failed:
        return "failed";
    case ItemOutcome::Kind::unknown:
        return "unknown";
    case ItemOutcome::Kind::restored:
        return "restored";
    }
    return "skipped";
}

void PrintTo(ItemOutcome::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const ItemOutcome& outcome, std::ostream* os) {
    *os << rawValue(outcome.kind) << "(";
    if (outcome.kind == ItemOutcome::Kind::movedToTrash) {
        *os << outcome.trashPath.value_or("no path");
        if (outcome.identity) {
            *os << ", " << outcome.identity->device << ":" << outcome.identity->inode;
        }
    } else {
        *os << "\"" << outcome.text << "\"";
    }
    *os << ")";
}

void to_json(nlohmann::ordered_json& j, const ItemOutcome& value) {
    json::Json payload = json::Json::object();
    if (value.kind == ItemOutcome::Kind::movedToTrash) {
        json::putOptionalText(payload, kTrashPathKey, value.trashPath);
        json::putOptional(payload, kIdentityKey, value.identity);
    } else {
        payload[std::string(kPayloadKey)] = json::text(value.text);
    }
    j = json::Json::object();
    j[std::string(rawValue(value.kind))] = std::move(payload);
}

void from_json(const nlohmann::ordered_json& j, ItemOutcome& value) {
    if (!j.is_object() || j.size() != 1) {
        throw json::DecodeError("an outcome has exactly one case");
    }
    auto only = j.begin();
    const std::string& name = only.key();
    const json::Json& payload = only.value();
    auto kind = fromRawValue<ItemOutcome::Kind>(name);
    if (!kind) {
        throw json::DecodeError("unknown outcome \"" + name + "\"");
    }
    if (!payload.is_object()) {
        throw json::DecodeError("an outcome's payload is an object");
    }
    value = ItemOutcome{};
    value.kind = *kind;
    if (*kind == ItemOutcome::Kind::movedToTrash) {
        value.trashPath = json::getOptionalText(payload, kTrashPathKey);
        value.identity = json::getOptional<FileIdentity>(payload, kIdentityKey);
    } else {
        value.text = json::getText(payload, kPayloadKey);
    }
}

} // namespace brevant
