// Archives left on disk, whoever has been at them.
#include "Fuzz/Require.h"

#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Storage/Archive.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

// Emptied for each input, gone with the process.
struct Scratch {
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("tallyfoot-fuzz-" + std::to_string(::getpid()));
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Scratch scratch;
    std::filesystem::remove_all(scratch.path);
    const auto folder = scratch.path / "outer" / "inner";
    std::filesystem::create_directories(folder);
    const auto archive = (scratch.path / "archive.zip").string();
    std::ofstream(archive, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

    static tallyfoot::PosixFileManager fileManager;
    const auto names = tallyfoot::Archive::unpack(fileManager, archive, folder.string() + "/");
    if (names)
        for (const auto& name : names.value())
            tallyfoot::fuzzing::require(std::filesystem::is_regular_file(folder / name),
                                        "every name given is a file in the folder");
    std::size_t outside = 0;
    for (const auto& entry : std::filesystem::directory_iterator(scratch.path / "outer"))
        outside += entry.path() == folder ? 0 : 1;
    for (const auto& entry : std::filesystem::directory_iterator(scratch.path))
        outside += entry.path().filename() == "outer" || entry.path() == archive ? 0 : 1;
    tallyfoot::fuzzing::require(outside == 0, "nothing is written outside the folder");
    return 0;
}
