#pragma once

#include <string_view>

// The words that name the platform, the machine and the application in every
// sentence shown to a user. Sentences are composed from these so that the
// product reads naturally on Linux.
namespace brevant::texts {

inline constexpr std::string_view kSystem = "Linux";
inline constexpr std::string_view kMachine = "this computer";
inline constexpr std::string_view kMachineCapitalized = "This computer";
inline constexpr std::string_view kMachinePossessive = "this computer's";
inline constexpr std::string_view kApplication = "Brevant";

} // namespace brevant::texts
