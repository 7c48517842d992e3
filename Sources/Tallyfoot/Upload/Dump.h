#pragma once

#include "Tallyfoot/Platform/URLSession.h"
#include "Tallyfoot/Upload/UploadResult.h"

#include <string>

namespace tallyfoot {

// Structural dumps for standard output, two spaces a level:
//
//     ▿ Tallyfoot.URLRequest
//       - url: "http://127.0.0.1:9090/upload"
//       ▿ headers: 2 elements
//         - "Content-Type": "multipart/form-data; boundary=…"
//         - "cookie": withheld
//       - body: 1234 bytes
//
// They are written whether or not the console is on, so they give nothing away that lets somebody
// act as the user: the token's header keeps its value to itself, an address the user and password
// that it may carry, and the body only its size. Long lists end early.
std::string dumpText(const URLRequest& request);
std::string dumpText(const UploadResult& result);

} // namespace tallyfoot
