#pragma once

#include <string_view>

// The library's keys in the user-defaults store.
namespace tallyfoot::storekeys {

inline constexpr std::string_view user = "User";                             // last user id
inline constexpr std::string_view currentApplication = "CurrentApplication"; // archived ApplicationInfo
inline constexpr std::string_view applications = "Applications";             // archived list, unique by appName
inline constexpr std::string_view eventCount = "EventCount";                 // events since the last trigger
inline constexpr std::string_view eventLastUpload = "EventLastUpload";       // its time, seconds since 1970

} // namespace tallyfoot::storekeys
