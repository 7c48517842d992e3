#pragma once

#include <zip.h>

#include <string>

namespace tallyfoot {

// Where libzip writes a new archive: a file of the user's alone that must not exist yet, and is gone
// again when the archive fails. libzip's own way draws random bytes for a temporary name, from a
// library that frees what it needs for that when the process ends, while a thread may still pack.
// Nothing, and the error, where there is no memory. Belongs to whoever opens an archive with it.
zip_source_t* makeArchiveSink(const std::string& path, zip_error_t& error);

} // namespace tallyfoot
