// Property lists that a host ships, XML and binary.
#include "Fuzz/Require.h"

#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const tallyfoot::PosixPropertyLists lists;
    const auto read = lists.propertyList(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!read || !(*read == *read)) return 0; // a number that is none equals nothing
    const auto again = lists.propertyList(lists.data(*read));
    tallyfoot::fuzzing::require(again.has_value(), "what is written can be read");
    tallyfoot::fuzzing::require(*again == *read, "what is written reads back the same");
    return 0;
}
