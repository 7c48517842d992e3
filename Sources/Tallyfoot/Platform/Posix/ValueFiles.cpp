#include "Tallyfoot/Platform/Posix/ValueFiles.h"

#include "Tallyfoot/Platform/Posix/PosixFileHandle.h"
#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"
#include "Tallyfoot/Platform/Posix/SystemError.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace tallyfoot {

namespace {

constexpr std::size_t longestName = 255;

bool isKept(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '_';
}

std::string fileName(std::string_view key) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string name;
    for (const char byte : key) {
        const auto value = static_cast<unsigned char>(byte);
        if (isKept(byte))
            name += byte;
        else
            name += {'%', digits[value >> 4U], digits[value & 0xFU]};
    }
    return name + ".plist";
}

} // namespace

ValueFiles::ValueFiles(std::string folder, std::shared_ptr<PropertyLists> lists)
    : folder_(std::move(folder)), lists_(std::move(lists)) {}

std::optional<std::string> ValueFiles::pathOf(std::string_view key) const {
    if (key.size() > longestName) return std::nullopt;
    const auto name = fileName(key);
    if (name.size() > longestName) return std::nullopt;
    return folder_ + "/" + name;
}

std::optional<PropertyList> ValueFiles::read(std::string_view key) const {
    const auto path = pathOf(key);
    std::error_code failed;
    if (!path || std::filesystem::file_size(*path, failed) > PosixPropertyLists::maximumSize || failed)
        return std::nullopt;
    const auto bytes = PosixFileManager().contents(*path);
    return bytes ? lists_->propertyList(bytes.value()) : std::nullopt;
}

bool ValueFiles::write(std::string_view key, const PropertyList& value) {
    const auto path = pathOf(key);
    if (!path) return false;
    const auto bytes = lists_->data(value);
    if (!lists_->propertyList(bytes)) return false; // too large or too deep to be read back
    // Under the lock one name will do: what a kill leaves behind, the next write takes.
    const auto hidden = folder_ + "/.value.new";
    constexpr int flags = O_RDWR | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC;
    FileDescriptor file(retrying([&] { return ::open(hidden.c_str(), flags, 0600); }));
    if (file && PosixFileHandle(std::move(file), hidden).append(bytes) && ::rename(hidden.c_str(), path->c_str()) == 0)
        return true;
    (void)::unlink(hidden.c_str());
    return false;
}

bool ValueFiles::remove(std::string_view key) {
    const auto path = pathOf(key);
    return !path || ::unlink(path->c_str()) == 0 || errno == ENOENT;
}

} // namespace tallyfoot
