#pragma once

#include "Tallyfoot/Events/EventFormatter.h"

namespace tallyfoot {

// The text of a stored event: a pretty-printed JSON object of texts under the record keys,
//
//     {
//       "evtId" : "…",
//       "pgName" : "Home"
//     }
//
// without a final line feed. Values are escaped, and what is ill-formed in them becomes U+FFFD, a
// maximal part of a sequence at a time. Stateless; any thread.
class FileEventFormatter final : public EventFormatter {
public:
    std::optional<std::string> format(const Event& event) const override;

    // The same of an event's properties, which are all that is stored of it, into a buffer that the
    // caller keeps: replaces its content, allocates nothing once it has grown. False when they cannot
    // be formatted.
    bool format(const Attributes& properties, std::string& into) const;
};

} // namespace tallyfoot
