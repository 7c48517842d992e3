#pragma once

#include "Tallyfoot/Platform/KeyedArchiver.h"

namespace tallyfoot {

// Writes the layout of the platform's archiver: a table of objects that name one another by unique
// ids, texts as plain entries and each of them once, nil as the first. Reads what other writers of
// that layout make of it, too: text objects, nils, fields of other types, XML. Where an array holds
// anything but objects, or an id leads nowhere, there is no archive.
class PosixKeyedArchiver final : public KeyedArchiver {
public:
    std::string archivedData(const Coder& root) const override;
    std::string archivedData(const std::vector<Coder>& rootArray) const override;
    std::optional<Coder> unarchivedObject(std::string_view data) const override;
    std::optional<std::vector<Coder>> unarchivedArray(std::string_view data) const override;
};

} // namespace tallyfoot
