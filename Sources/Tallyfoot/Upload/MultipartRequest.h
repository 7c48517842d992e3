#pragma once

#include "Tallyfoot/Platform/Random.h"
#include "Tallyfoot/Platform/URLSession.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// "tallyfoot.boundary." and twice eight hexadecimal digits.
std::string randomBoundary(Random& random);
const std::string& boundary(Random& random); // made once a process

// Appends the text as UTF-8; nothing of a text that is not well-formed.
void appendString(std::string& data, std::string_view text);

// The POST that carries one file as multipart/form-data: a text part for each parameter, then the
// file's. Nothing is escaped; a text that is not well-formed UTF-8 is left out of the body, its
// place empty. Absent when the path is no URL. `mime` is accepted and not used: the part's type is
// that of the file name's extension. `data` becomes a piece of the body and is not copied.
std::optional<URLRequest> multipartRequest(std::string path, const std::map<std::string, std::string>& parameters,
                                           std::string_view boundary, std::string data, std::string_view name,
                                           std::string_view mime, std::string_view filename);

} // namespace tallyfoot
