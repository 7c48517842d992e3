#include "Tallyfoot/Platform/Posix/NumberTable.h"

#include "Tallyfoot/Platform/Posix/FileDescriptor.h"
#include "Tallyfoot/Platform/Posix/SystemError.h"
#include "Tallyfoot/Platform/Posix/WriteSignals.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace tallyfoot {

namespace {

// Changes with the layout, and reads differently where bytes have another order.
constexpr std::uint64_t signature = 0x31'73'72'65'62'6d'75'4e; // "Numbers1"
constexpr std::size_t slotCount = 256;

std::size_t hashOf(std::string_view key) noexcept {
    // The same in every process and version; eight bytes a step, as numbers are looked up for each event.
    std::uint64_t hash = key.size();
    while (!key.empty()) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, key.data(), std::min(key.size(), sizeof bytes));
        hash = (hash ^ bytes) * 0x9E3779B97F4A7C15U;
        hash ^= hash >> 32U;
        key.remove_prefix(std::min(key.size(), sizeof bytes));
    }
    return static_cast<std::size_t>(hash);
}

} // namespace

struct NumberTable::Layout {
    std::uint64_t signature;
    std::uint64_t size;
    std::atomic<std::uint64_t> generation;
    std::array<std::uint64_t, 13> reserved;
    std::array<Slot, slotCount> slots;

    bool isSound() const noexcept {
        return signature == tallyfoot::signature && size == sizeof(Layout)
               && std::all_of(slots.begin(), slots.end(), [](const Slot& slot) { return slot.isSound(); });
    }
};

static_assert(std::atomic<std::uint64_t>::is_always_lock_free && std::atomic<double>::is_always_lock_free,
              "shared between processes, a value must not need a lock of one of them");

// Slot

bool NumberTable::Slot::isSound() const noexcept {
    return kind_.load(std::memory_order_relaxed) <= real && keyMark_.load(std::memory_order_relaxed) <= keyCapacity + 1;
}

void NumberTable::Slot::take(std::string_view key) noexcept {
    key.copy(key_.data(), key.size());
    keyMark_.store(static_cast<std::uint32_t>(key.size() + 1), std::memory_order_release);
}

std::optional<NumberTable::Number> NumberTable::Slot::number() const noexcept {
    switch (kind_.load(std::memory_order_acquire)) {
    case no: return false;
    case yes: return true;
    case integer: return integer_.load(std::memory_order_relaxed);
    case real: return real_.load(std::memory_order_relaxed);
    default: return std::nullopt;
    }
}

void NumberTable::Slot::store(Number number) noexcept {
    // Each kind has a word of its own and the kind is written last: whoever reads before that, or
    // after a kill before that, finds the former number untouched.
    std::uint64_t kind = none;
    if (const auto* boolean = std::get_if<bool>(&number)) {
        kind = *boolean ? yes : no;
    } else if (const auto* whole = std::get_if<std::int64_t>(&number)) {
        integer_.store(*whole, std::memory_order_release);
        kind = integer;
    } else {
        real_.store(std::get<double>(number), std::memory_order_release);
        kind = real;
    }
    if (kind_.load(std::memory_order_relaxed) != kind) kind_.store(kind, std::memory_order_seq_cst);
}

void NumberTable::Slot::clear() noexcept { kind_.store(none, std::memory_order_seq_cst); }

// Table

NumberTable::Opened NumberTable::open(const std::string& path) {
    bool isWritable = true;
    FileDescriptor file(retrying([&] { return ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC); }));
    if (!file && (errno == EACCES || errno == EROFS)) {
        isWritable = false;
        file = FileDescriptor(retrying([&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); }));
    }
    if (!file) return {nullptr, errno == EISDIR || errno == ELOOP || errno == ENXIO};
    struct stat status {};
    if (::fstat(file.number(), &status) != 0) return {};
    if (!S_ISREG(status.st_mode) || status.st_size != static_cast<off_t>(sizeof(Layout))) return {nullptr, true};

    const int access = isWritable ? PROT_READ | PROT_WRITE : PROT_READ;
    void* memory = ::mmap(nullptr, sizeof(Layout), access, MAP_SHARED, file.number(), 0);
    if (memory == MAP_FAILED) return {};
    std::unique_ptr<NumberTable> table(
        new NumberTable(static_cast<Layout*>(memory), isWritable, status.st_dev, status.st_ino));
    if (!table->layout_->isSound()) return {nullptr, true};
    return {std::move(table), false};
}

bool NumberTable::create(const std::string& path) {
    const auto slash = path.rfind('/') + 1;
    const auto hidden = path.substr(0, slash) + "." + path.substr(slash) + ".new";
    const FileDescriptor file(
        retrying([&] { return ::open(hidden.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600); }));
    if (!file) return false;
    // Room that is not there yet would be asked for by a store, and refused by a signal.
    const std::array<std::uint64_t, 2> head{signature, sizeof(Layout)};
    WriteSignals signals;
    const bool isMade = ::posix_fallocate(file.number(), 0, static_cast<off_t>(sizeof(Layout))) == 0
                        && retrying([&] { return ::pwrite(file.number(), head.data(), sizeof head, 0); })
                               == static_cast<ssize_t>(sizeof head)
                        && ::rename(hidden.c_str(), path.c_str()) == 0;
    if (isMade) return true;
    signals.takeAway(SIGXFSZ);
    (void)::unlink(hidden.c_str());
    return false;
}

NumberTable::~NumberTable() { ::munmap(layout_, sizeof(Layout)); }

NumberTable::Slot* NumberTable::find(std::string_view key) const noexcept {
    for (std::size_t step = 0, at = hashOf(key); step < slotCount; ++step, ++at) {
        Slot& slot = layout_->slots[at % slotCount];
        if (slot.isFree()) return nullptr;
        if (slot.key() == key) return &slot;
    }
    return nullptr;
}

NumberTable::Slot* NumberTable::slotFor(std::string_view key) noexcept {
    if (key.size() > Slot::keyCapacity) return nullptr;
    for (std::size_t step = 0, at = hashOf(key); step < slotCount; ++step, ++at) {
        Slot& slot = layout_->slots[at % slotCount];
        if (slot.isFree()) slot.take(key);
        if (slot.key() == key) return &slot;
    }
    return nullptr;
}

bool NumberTable::isFileAt(const std::string& path) const noexcept {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == node_;
}

std::uint64_t NumberTable::generation() const noexcept { return layout_->generation.load(std::memory_order_seq_cst); }

void NumberTable::nextGeneration() noexcept { layout_->generation.fetch_add(1, std::memory_order_seq_cst); }

} // namespace tallyfoot
