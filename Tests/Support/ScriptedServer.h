#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tallyfoot::testing {

// An HTTP server on the loopback interface that does to each request what the test has written down
// for it, byte by byte and in the order in which the requests arrive. What nothing is written down
// for is answered with an empty JSON object. Any thread.
class ScriptedServer {
public:
    // What it takes in before it answers. A dropped body is read and not kept.
    enum class Reading { everything, headOnly, dropsBody };

    // What it does to the connection afterwards. A silent one stays open and unread until the
    // client or the server goes.
    enum class Ending { keepsOpen, closes, resets, fallsSilent };

    struct Step {
        std::string answer; // raw, status line included; see `response`
        Ending ending = Ending::keepsOpen;
        Reading reading = Reading::everything;
        std::chrono::milliseconds pace{0}; // before each byte of the answer
    };

    struct Request {
        std::string head; // request line and header lines as they came, with the last one's CRLF
        std::string body; // empty where it was dropped or not read

        bool hasLine(std::string_view line) const; // in the head, exactly
        std::string path() const;
    };

    ScriptedServer();
    ~ScriptedServer(); // whatever is still under way ends
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    std::uint16_t port() const noexcept;
    std::string url(std::string_view path = "/upload") const;

    void script(Step step); // for the next request that has none
    static std::string response(std::string_view body, std::string_view status = "200 OK",
                                std::string_view headerLines = "");

    // Both wait; a wait that takes too long fails the test and gives what there is.
    Request request(std::size_t index);            // the index-th to arrive, from 0
    void waitForDisconnections(std::size_t count); // connections that the client or a step has ended

    std::size_t requestCount() const;
    std::size_t connectionCount() const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tallyfoot::testing
