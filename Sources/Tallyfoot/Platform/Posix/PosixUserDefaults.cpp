#include "Tallyfoot/Platform/Posix/PosixUserDefaults.h"

#include "Tallyfoot/Platform/Posix/FileLock.h"
#include "Tallyfoot/Platform/Posix/PosixFileManager.h"
#include "Tallyfoot/Platform/Posix/PosixSignalSafeStore.h"
#include "Tallyfoot/Platform/PropertyListNumbers.h"

#include <unistd.h>

#include <cstdio>

namespace tallyfoot {

namespace {

constexpr std::chrono::seconds lockPause{10};

std::optional<NumberTable::Number> numberOf(const PropertyList& list) {
    if (const auto* boolean = list.as<bool>()) return *boolean;
    if (const auto* integer = list.as<std::int64_t>()) return *integer;
    if (const auto* real = list.as<double>()) return *real;
    return std::nullopt;
}

PropertyList listOf(NumberTable::Number number) {
    return std::visit([](auto value) { return PropertyList{value}; }, number);
}

bool holdsNumber(const NumberTable* table, std::string_view key) {
    const auto* slot = table == nullptr ? nullptr : table->find(key);
    return slot != nullptr && slot->number();
}

} // namespace

PosixUserDefaults::PosixUserDefaults(std::string folder, std::shared_ptr<PropertyLists> propertyLists)
    : folder_(std::move(folder)), tablePath_(folder_ + "/numbers"), files_(folder_, std::move(propertyLists)) {}

// Reading

std::optional<NumberTable::Number> PosixUserDefaults::quickNumber(std::string_view key) const noexcept {
    if (hasUnkept_.load(std::memory_order_acquire)) return std::nullopt;
    const auto* table = table_.load(std::memory_order_acquire);
    const auto* slot = table == nullptr ? nullptr : table->find(key);
    return slot == nullptr ? std::nullopt : slot->number();
}

std::int64_t PosixUserDefaults::integer(std::string_view key) const {
    if (const auto number = quickNumber(key)) {
        if (const auto* integer = std::get_if<std::int64_t>(&*number)) return *integer;
        return integerValue(listOf(*number));
    }
    const auto value = object(key);
    return value ? integerValue(*value) : 0;
}

double PosixUserDefaults::real(std::string_view key) const {
    if (const auto number = quickNumber(key)) return realValue(listOf(*number));
    const auto value = object(key);
    return value ? realValue(*value) : 0;
}

std::optional<PropertyList> PosixUserDefaults::object(std::string_view key) const {
    if (hasUnkept_.load(std::memory_order_acquire)) {
        MutexLock lock(mutex_);
        if (const auto found = unkept_.find(key); found != unkept_.end()) return found->second;
    }
    if (folder_.empty()) return std::nullopt;
    // Between a look at the slot and one at the file, the value may have moved from this to that.
    for (;;) {
        const auto* numbers = table();
        const auto generation = numbers == nullptr ? 0 : numbers->generation();
        if (const auto* slot = numbers == nullptr ? nullptr : numbers->find(key))
            if (const auto number = slot->number()) return listOf(*number);
        auto value = files_.read(key);
        const auto* after = table();
        if (value || after == nullptr || (after == numbers && after->generation() == generation)) return value;
    }
}

// Writing

void PosixUserDefaults::setInteger(std::string_view key, std::int64_t value) { setNumber(key, value); }

void PosixUserDefaults::setReal(std::string_view key, double value) { setNumber(key, value); }

void PosixUserDefaults::setObject(std::string_view key, const PropertyList& value) {
    if (const auto number = numberOf(value)) return setNumber(key, *number);
    change(key, value);
}

void PosixUserDefaults::remove(std::string_view key) { change(key, std::nullopt); }

void PosixUserDefaults::setNumber(std::string_view key, Number number) {
    auto* numbers = table_.load(std::memory_order_acquire);
    if (numbers != nullptr && numbers->isWritable() && !hasUnkept_.load(std::memory_order_acquire))
        if (auto* slot = numbers->find(key); slot != nullptr && slot->number()) return slot->store(number);
    change(key, listOf(number));
}

void PosixUserDefaults::change(std::string_view key, const Value& value) {
    MutexLock lock(mutex_);
    if (!keep(key, value))
        unkept_.insert_or_assign(std::string(key), value);
    else if (const auto former = unkept_.find(key); former != unkept_.end())
        unkept_.erase(former);
    hasUnkept_.store(!unkept_.empty(), std::memory_order_release);
}

bool PosixUserDefaults::synchronize() {
    if (!hasUnkept_.load(std::memory_order_acquire)) return true;
    MutexLock lock(mutex_);
    std::erase_if(unkept_,
                  [this](const auto& entry) TALLYFOOT_REQUIRES(mutex_) { return keep(entry.first, entry.second); });
    hasUnkept_.store(!unkept_.empty(), std::memory_order_release);
    return unkept_.empty();
}

std::unique_ptr<SignalSafeStore> PosixUserDefaults::makeSignalSafeStore(std::string_view key) {
    const auto path = files_.pathOf(key);
    if (folder_.empty() || !path || !PosixFileManager().createDirectory(folder_)) return nullptr;
    (void)table(); // so that it is open when it is asked for
    return std::make_unique<PosixSignalSafeStore>(folder_, *path, std::string(key), table_);
}

bool PosixUserDefaults::keep(std::string_view key, const Value& value) {
    PosixFileManager files;
    if (folder_.empty() || std::chrono::steady_clock::now() < notBefore_) return false;
    if (!value && !files.directoryExists(folder_)) return true;
    if (!files.createDirectory(folder_)) return false;
    const FileLock processes(folder_ + "/.lock");
    if (!processes) {
        if (processes.isBusy()) notBefore_ = std::chrono::steady_clock::now() + lockPause;
        return false;
    }
    const auto number = value ? numberOf(*value) : std::nullopt;
    return number ? keepNumber(key, *value, *number) : keepFile(key, value);
}

bool PosixUserDefaults::keepNumber(std::string_view key, const PropertyList& value, Number number) {
    auto* numbers = currentTable();
    if (isTableHidden()) return false;
    if (numbers == nullptr && NumberTable::create(tablePath_)) numbers = openTable();
    if (numbers != nullptr && !numbers->isWritable() && holdsNumber(numbers, key)) return false;
    auto* slot = numbers != nullptr && numbers->isWritable() ? numbers->slotFor(key) : nullptr;
    if (slot == nullptr) return files_.write(key, value);
    slot->store(number); // counts from here on, whatever becomes of the file
    numbers->nextGeneration();
    (void)files_.remove(key);
    return true;
}

bool PosixUserDefaults::keepFile(std::string_view key, const Value& value) {
    auto* numbers = currentTable();
    if (isTableHidden()) return false;
    const bool hasNumber = holdsNumber(numbers, key);
    if (hasNumber && !numbers->isWritable()) return false;
    if (value ? !files_.write(key, *value) : !files_.remove(key)) return false;
    if (hasNumber) numbers->find(key)->clear();
    return true;
}

// The table

NumberTable* PosixUserDefaults::table() const {
    if (auto* numbers = table_.load(std::memory_order_acquire)) return numbers;
    MutexLock lock(mutex_);
    auto* numbers = table_.load(std::memory_order_relaxed);
    return numbers == nullptr ? openTable() : numbers;
}

NumberTable* PosixUserDefaults::openTable() const {
    auto opened = NumberTable::open(tablePath_);
    auto* numbers = opened.table.get();
    if (numbers != nullptr) tables_.push_back(std::move(opened.table));
    table_.store(numbers, std::memory_order_release);
    return numbers;
}

// Somebody may have removed the file, or made it writable. Its readers keep theirs, which is why it is not released.
NumberTable* PosixUserDefaults::currentTable() {
    auto* numbers = table_.load(std::memory_order_relaxed);
    if (numbers != nullptr && numbers->isFileAt(tablePath_)
        && (numbers->isWritable() || ::access(tablePath_.c_str(), W_OK) != 0))
        return numbers;
    if (NumberTable::open(tablePath_).isDamaged)
        (void)std::rename(tablePath_.c_str(), (tablePath_ + ".damaged").c_str());
    return openTable();
}

// It is there but cannot be opened now: what it holds for a key is not known.
bool PosixUserDefaults::isTableHidden() const {
    return table_.load(std::memory_order_relaxed) == nullptr && PosixFileManager().fileExists(tablePath_);
}

} // namespace tallyfoot
