#pragma once

#include "Tallyfoot/Platform/Posix/FileDescriptor.h"
#include "Tallyfoot/Platform/Posix/NumberTable.h"
#include "Tallyfoot/Platform/SignalSafeStore.h"

#include <atomic>
#include <string>
#include <vector>

namespace tallyfoot {

// Writes the value file as an XML property list, which needs no room but a small buffer on the stack,
// under a hidden name of the process's own; then renames it and clears the key's number, if any. What a
// process that was killed meanwhile has left goes when the next store is made. Holds a file descriptor
// ready, for a process that crashes because it has used up its own.
class PosixSignalSafeStore final : public SignalSafeStore {
public:
    PosixSignalSafeStore(const std::string& folder, std::string path, std::string key,
                         const std::atomic<NumberTable*>& numbers);

    bool store(std::span<const Text> texts) noexcept override;

private:
    void nameHidden() noexcept;
    FileDescriptor open() noexcept;

    const std::vector<std::string> folders_;
    std::string hidden_;
    const std::string path_;
    const std::string key_;
    const std::atomic<NumberTable*>& numbers_;
    FileDescriptor spare_;
};

} // namespace tallyfoot
