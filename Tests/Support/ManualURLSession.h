#pragma once

#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/URLSession.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tallyfoot::testing {

// Keeps its tasks until the test answers them, on the thread that the test answers from.
class ManualURLSession final : public URLSession {
public:
    void dataTask(URLRequest request, DataTaskCompletion completion) override;

    std::size_t waiting() const;              // tasks not yet answered
    std::vector<URLRequest> requests() const; // all that ever came

    // Answers one of the waiting tasks: the one at this place, from 0, or the oldest.
    void answer(std::size_t place, Result<std::string> body);
    void answer(Result<std::string> body) { answer(0, std::move(body)); }
    void answerWith(const std::string& statusCode, const std::vector<std::string>& success = {},
                    const std::vector<std::string>& failure = {});

private:
    struct State {
        std::vector<URLRequest> requests;
        std::vector<DataTaskCompletion> waiting;
    };

    Exclusive<State> state_;
};

} // namespace tallyfoot::testing
