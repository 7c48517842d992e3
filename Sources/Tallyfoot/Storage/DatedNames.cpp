#include "Tallyfoot/Storage/DatedNames.h"

#include "Tallyfoot/Events/DateFormatter.h"
#include "Tallyfoot/Platform/Exclusive.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>

namespace tallyfoot {

namespace {

using Folder = AppFolder::Folder;
using Milliseconds = std::chrono::time_point<std::chrono::system_clock, std::chrono::milliseconds>;

// Never released: a log call made while the process ends still needs them.
const DateFormatter& dateFormatter() {
    static const auto& formatter = *new DateFormatter("dd-MM-yyyy'T'HH-mm-ss-SSS");
    return formatter;
}

// What the process gave out. A clock that stands still goes on from the last moment; one that was
// set back starts over and is held against the latest names, of which digests are enough: one too
// many costs a millisecond.
class Memory {
public:
    Milliseconds advance(Milliseconds now) noexcept {
        if (first_ <= now && now <= last_) {
            ++last_;
        } else {
            first_ = last_ = now;
        }
        return last_;
    }

    bool take(std::size_t digest) noexcept {
        const auto known = digests_.begin() + static_cast<std::ptrdiff_t>(std::min(count_, digests_.size()));
        if (std::find(digests_.begin(), known, digest) != known) return false;
        digests_[count_++ % digests_.size()] = digest;
        return true;
    }

private:
    Milliseconds first_ = Milliseconds::max();
    Milliseconds last_ = Milliseconds::min();
    std::array<std::size_t, 1024> digests_{};
    std::size_t count_ = 0;
};

Exclusive<Memory>& memory() {
    static auto& memory = *new Exclusive<Memory>;
    return memory;
}

} // namespace

DatedNames::DatedNames(FileManager& fileManager, const Clock& clock, const AppFolder& appFolder)
    : fileManager_(fileManager), clock_(clock), appFolder_(appFolder) {}

std::string DatedNames::next(std::string_view extension) const {
    const auto now = std::chrono::round<std::chrono::milliseconds>(clock_.now());
    while (true) {
        const auto moment = memory().modify([&](Memory& names) { return names.advance(now); });
        auto name = dateFormatter().string(moment);
        if (name.empty())
            name = std::to_string(moment.time_since_epoch().count()); // never two alike, whatever ICU does
        const auto digest = std::hash<std::string>{}(name);
        if (!memory().modify([&](Memory& names) { return names.take(digest); })) continue;
        if (!isOnDisk(name, extension)) return name.append(extension);
    }
}

std::optional<Date> DatedNames::date(std::string_view name) {
    return dateFormatter().date(name.substr(0, name.find('.')));
}

bool DatedNames::isOnDisk(const std::string& moment, std::string_view extension) const {
    for (const auto folder : {Folder::events, Folder::upload, Folder::backup}) {
        const auto path = appFolder_.path(folder, moment);
        for (const std::string_view taken : {std::string_view(".log"), std::string_view(".zip"), extension}) {
            if (fileManager_.fileExists(path + std::string(taken))) return true;
        }
    }
    return false;
}

} // namespace tallyfoot
