#include "FaceReading.hpp"

namespace brevant {

PlistValue toPlist(const FaceReading& reading) {
    return PlistValue::Dictionary{{"faces", reading.faces},
                                  {"eyesClosed", reading.eyesClosed},
                                  {"smiling", reading.smiling},
                                  {"revision", reading.revision}};
}

std::optional<FaceReading> faceReadingFromPlist(const PlistValue& value) {
    FaceReading reading;
    for (auto [key, field] :
         {std::pair{"faces", &reading.faces}, std::pair{"eyesClosed", &reading.eyesClosed},
          std::pair{"smiling", &reading.smiling}, std::pair{"revision", &reading.revision}}) {
        const PlistValue* stored = value.find(key);
        std::optional<int> number = stored != nullptr ? stored->intValue() : std::nullopt;
        if (!number) {
            return std::nullopt;
        }
        *field = *number;
    }
    return reading;
}

} // namespace brevant
