// The server's answer.
#include "Fuzz/Require.h"

#include "Tallyfoot/Events/JSON.h"
#include "Tallyfoot/Upload/UploadResult.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tallyfoot;
    const auto response = json::dictionary(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!response) return 0;
    if (const auto result = decodeUploadResult(*response))
        fuzzing::require(response->contains("statusCode"), "no result without a status code");
    return 0;
}
