#pragma once

#include "Tallyfoot/Platform/Mutex.h"
#include "Tallyfoot/Platform/Posix/NumberTable.h"
#include "Tallyfoot/Platform/Posix/ValueFiles.h"
#include "Tallyfoot/Platform/UserDefaults.h"

#include <atomic>
#include <map>
#include <memory>
#include <vector>

namespace tallyfoot {

// One folder a store. Numbers are slots of the mapped file "numbers", everything else is a small file
// of its own; a number that finds no slot, too. A key has one value: its slot's number, if it holds
// one, else its file. Where both change, the new value is in place before the old one goes, so that
// a reader, or the next start after a kill at any instant, finds one of them whole.
//
// The folder is made by the first write. A "numbers" that is no table of ours is set aside as
// "numbers.damaged". An empty folder name, a key of more than about 80 to 240 bytes (after escaping)
// with a value that needs a file, and whatever the disk refuses are kept in memory; synchronize
// tries again and tells.
class PosixUserDefaults final : public UserDefaults {
public:
    PosixUserDefaults(std::string folder, std::shared_ptr<PropertyLists> propertyLists);

    // Of numbers these are a few atomic steps, once the key has been written by anybody.
    std::int64_t integer(std::string_view key) const override;
    double real(std::string_view key) const override;
    void setInteger(std::string_view key, std::int64_t value) override;
    void setReal(std::string_view key, double value) override;

    std::optional<PropertyList> object(std::string_view key) const override;
    void setObject(std::string_view key, const PropertyList& value) override;
    void remove(std::string_view key) override;
    bool synchronize() override;
    std::unique_ptr<SignalSafeStore> makeSignalSafeStore(std::string_view key) override;

private:
    using Number = NumberTable::Number;
    using Value = std::optional<PropertyList>; // nothing is a removal
    using Instant = std::chrono::steady_clock::time_point;

    std::optional<Number> quickNumber(std::string_view key) const noexcept;
    void setNumber(std::string_view key, Number number);
    void change(std::string_view key, const Value& value);

    bool keep(std::string_view key, const Value& value) TALLYFOOT_REQUIRES(mutex_);
    bool keepNumber(std::string_view key, const PropertyList& value, Number number) TALLYFOOT_REQUIRES(mutex_);
    bool keepFile(std::string_view key, const Value& value) TALLYFOOT_REQUIRES(mutex_);

    NumberTable* table() const;
    NumberTable* openTable() const TALLYFOOT_REQUIRES(mutex_);
    NumberTable* currentTable() TALLYFOOT_REQUIRES(mutex_);
    bool isTableHidden() const TALLYFOOT_REQUIRES(mutex_);

    const std::string folder_;
    const std::string tablePath_;
    mutable std::atomic<NumberTable*> table_{nullptr};
    std::atomic<bool> hasUnkept_{false};

    mutable Mutex mutex_; // for all but reading and storing into a slot
    ValueFiles files_;
    mutable std::vector<std::unique_ptr<NumberTable>> tables_ TALLYFOOT_GUARDED_BY(mutex_); // replaced ones too
    std::map<std::string, Value, std::less<>> unkept_ TALLYFOOT_GUARDED_BY(mutex_);
    Instant notBefore_ TALLYFOOT_GUARDED_BY(mutex_){}; // when to ask again for a lock that did not come
};

} // namespace tallyfoot
