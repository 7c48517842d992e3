#pragma once

#include "Support/ManualDispatch.h"
#include "Timing/SpyDispatch.h"

#include "Tallyfoot/Recording/Timing/Repeater.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tallyfoot::testing {

inline constexpr auto noTolerance = DispatchTimeInterval::nanoseconds(0);

// Repeaters on a clock in the test's hands, and what was heard of them.
class RepeaterTest : public ::testing::Test {
protected:
    // Ten seconds, counting its ticks and noting its states.
    std::shared_ptr<Repeater> make(Repeater::Mode mode);
    std::shared_ptr<Repeater> started(Repeater::Mode mode); // the states begin anew

    std::shared_ptr<Repeater> noting(std::shared_ptr<Repeater> repeater);
    Repeater::Observer counting();

    ManualDispatch manual;
    SpyDispatch dispatch{manual};
    std::vector<Repeater::State> states;
    int ticks = 0;
};

} // namespace tallyfoot::testing
