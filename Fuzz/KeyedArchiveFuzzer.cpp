// Keyed archives from the user-defaults store, whoever wrote them.
#include "Fuzz/Require.h"

#include "Tallyfoot/Platform/Posix/PosixKeyedArchiver.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const tallyfoot::PosixKeyedArchiver archiver;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (const auto object = archiver.unarchivedObject(bytes)) {
        const auto again = archiver.unarchivedObject(archiver.archivedData(*object));
        tallyfoot::fuzzing::require(again.has_value(), "an object that was read can be archived and read");
        tallyfoot::fuzzing::require(again->className() == object->className(), "its class stays");
        for (const auto& [key, text] : object->fields())
            tallyfoot::fuzzing::require(again->decode(key) == object->decode(key), "its fields stay");
    }
    if (const auto array = archiver.unarchivedArray(bytes)) {
        const auto again = archiver.unarchivedArray(archiver.archivedData(*array));
        tallyfoot::fuzzing::require(again && again->size() == array->size(), "an array that was read can be, too");
    }
    return 0;
}
