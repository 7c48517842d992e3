#include "Timing/RepeaterTest.h"

namespace tallyfoot::testing {

std::shared_ptr<Repeater> RepeaterTest::make(Repeater::Mode mode) {
    return noting(Repeater::make(dispatch, Repeater::Interval::seconds(10), mode, noTolerance, nullptr, counting()));
}

std::shared_ptr<Repeater> RepeaterTest::started(Repeater::Mode mode) {
    auto repeater = make(mode);
    repeater->start();
    states.clear();
    return repeater;
}

std::shared_ptr<Repeater> RepeaterTest::noting(std::shared_ptr<Repeater> repeater) {
    repeater->setOnStateChanged([this](Repeater& sender, Repeater::State state) {
        EXPECT_EQ(sender.state(), state);
        states.push_back(state);
    });
    return repeater;
}

Repeater::Observer RepeaterTest::counting() {
    return [this](Repeater&) { ++ticks; };
}

} // namespace tallyfoot::testing
