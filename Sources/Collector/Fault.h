#pragma once

#include "Tallyfoot/Platform/Result.h"

#include <nlohmann/json_fwd.hpp>

#include <array>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallyfoot::collector {

// What the collector is told to do with one upload. As JSON, an object with "kind" and the members
// named here; every kind also takes "milliseconds", a wait before the answer.
struct Fault {
    enum class Kind {
        accept,    // the plain answer; every readable file is accepted
        refuse,    // "files": "all", a list of log names, or {"every": n}: these come back under "failure"
        status,    // "statusCode": a text; the lists are empty for the three authentication codes
        http,      // "status"; "body": "text" (default), "empty" or "answer", the plain one; "location"
        delay,     // the plain answer, late
        garbage,   // an answer that is no JSON
        answer,    // "body": sent as it is; "accepted": whether it counts as accepting
        reset,     // "afterBytes": the connection is reset once so many bytes of the body were read
        dropReply, // accepts and stores, then closes without an answer
    };

    Kind kind = Kind::accept;
    std::chrono::milliseconds wait{0};
    bool refusesAll = false;
    std::size_t refusesEvery = 0; // of the files, the n-th, 2n-th …
    std::vector<std::string> refusedFiles;
    std::string statusCode;
    int httpStatus = 200;
    std::string body;
    std::string location;
    bool accepted = false;
    std::size_t afterBytes = 0;

    bool refuses(std::string_view file, std::size_t index) const;

    // One fault, or several for "times".
    static Result<std::vector<Fault>> parse(const nlohmann::json& description);
    // The same from an option: JSON, or a kind and its one value: "status:10000003", "reset:1000",
    // "delay:200", "http:500", "refuse:2" (every second file).
    static Result<std::vector<Fault>> parseOption(std::string_view option);
};

inline constexpr std::array faultKinds{std::pair{Fault::Kind::accept, std::string_view("accept")},
                                       std::pair{Fault::Kind::refuse, std::string_view("refuse")},
                                       std::pair{Fault::Kind::status, std::string_view("status")},
                                       std::pair{Fault::Kind::http, std::string_view("http")},
                                       std::pair{Fault::Kind::delay, std::string_view("delay")},
                                       std::pair{Fault::Kind::garbage, std::string_view("garbage")},
                                       std::pair{Fault::Kind::answer, std::string_view("answer")},
                                       std::pair{Fault::Kind::reset, std::string_view("reset")},
                                       std::pair{Fault::Kind::dropReply, std::string_view("dropReply")}};

std::string_view text(Fault::Kind kind) noexcept;
bool isAuthenticationRejection(std::string_view statusCode) noexcept;

} // namespace tallyfoot::collector
