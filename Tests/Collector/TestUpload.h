#pragma once

#include "Collector/UploadChecker.h"

#include <nlohmann/json.hpp>

#include <string>
#include <utility>
#include <vector>

namespace tallyfoot::testing {

// An upload made by hand, right in everything until a test changes something.
struct TestUpload {
    using Entries = std::vector<std::pair<std::string, std::string>>;

    TestUpload(); // one log of one record
    explicit TestUpload(const Entries& logs);

    std::string target = "/upload";
    std::string boundary = "tallyfoot.boundary.0123456789abcdef";
    std::string contentType; // made of the boundary if empty
    std::string cookie = "token-1";
    std::string extraHeaders; // whole lines
    std::vector<std::pair<std::string, std::string>> fields;
    std::string filename = "07-03-2024T14-05-09-123.zip";
    std::string fileHeaders; // made of the name if empty
    std::string file;        // the archive's bytes

    void setField(const std::string& name, const std::string& value);
    void removeField(const std::string& name);
    std::string body() const;
    std::string head(std::size_t bodySize) const;
};

// What the collector makes of it.
collector::CheckedUpload checked(const TestUpload& upload);

// The archive's bytes. Stored unless compressed.
std::string archive(const TestUpload::Entries& entries, bool compressed = false);

std::string record(const std::string& evtId,
                   const std::string& evtType = "action");   // as it is stored, without separator
std::string recordOf(const nlohmann::ordered_json& members); // the same of any texts
std::string log(const std::vector<std::string>& records);

// How an exchange with a server ended.
struct Exchange {
    enum class End { answered, closed, reset };
    End end = End::closed;
    int status = 0;
    std::string body;

    nlohmann::json response() const; // data.response of the body
};

Exchange talk(int port, const std::string& bytes);
Exchange talkHalf(int port, const std::string& bytes); // the client says that no more will follow
Exchange talkInPieces(int port, const std::string& bytes, std::size_t pieceSize);
Exchange send(int port, const TestUpload& upload);

// Has said something and waits, until it is gone.
class SilentClient {
public:
    SilentClient(int port, const std::string& said);
    ~SilentClient();
    SilentClient(const SilentClient&) = delete;
    SilentClient& operator=(const SilentClient&) = delete;

private:
    int socket_;
};

} // namespace tallyfoot::testing
