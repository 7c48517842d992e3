#pragma once

#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/URLSession.h"

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// Holds every request until the test answers it, so that a test can look at what is in flight.
class FakeURLSession final : public URLSession {
public:
    void dataTask(URLRequest request, DataTaskCompletion completion) override;

    std::size_t waiting() const;              // requests not yet answered
    std::vector<URLRequest> requests() const; // all that ever came

    // Answers the oldest waiting request, on the calling thread.
    void answer(Result<std::string> body);
    void answerWith(const std::string& statusCode, const std::vector<std::string>& success = {},
                    const std::vector<std::string>& failure = {});

private:
    struct State {
        std::vector<URLRequest> requests;
        std::deque<DataTaskCompletion> waiting;
    };

    Exclusive<State> state_;
};

} // namespace tallyfoot::testing
