#pragma once

#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/URLSession.h"

#include <cstddef>
#include <vector>

namespace tallyfoot::testing {

// Keeps its tasks until the test answers them, on the test's own thread. Tasks that are left are
// dropped without a completion.
class ManualURLSession final : public URLSession {
public:
    struct Task {
        URLRequest request;
        DataTaskCompletion completion;
    };

    void dataTask(URLRequest request, DataTaskCompletion completion) override {
        tasks_.modify([&](auto& tasks) { tasks.push_back({std::move(request), std::move(completion)}); });
    }

    std::size_t taskCount() const {
        return tasks_.read([](const auto& tasks) { return tasks.size(); });
    }

    URLRequest request(std::size_t place) const {
        return tasks_.read([&](const auto& tasks) { return tasks.at(place).request; });
    }

    // Takes the task out and completes it.
    void answer(std::size_t place, Result<std::string> answer) {
        const Task task = tasks_.modify([&](auto& tasks) {
            Task taken = std::move(tasks.at(place));
            tasks.erase(tasks.begin() + static_cast<std::ptrdiff_t>(place));
            return taken;
        });
        task.completion(std::move(answer));
    }

    void answer(Result<std::string> answer) { this->answer(0, std::move(answer)); }

private:
    Exclusive<std::vector<Task>> tasks_;
};

} // namespace tallyfoot::testing
