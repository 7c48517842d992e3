#pragma once

#include "Tallyfoot/Capture/ControlActions.h"

namespace tallyfoot {

// Gestures reach the library through a target of their own, which every recognizer of the five standard
// kinds gets when it is made.
class Gestures {
public:
    explicit Gestures(const ControlActions& actions) : actions_(actions) {}

    void addTarget(const PlatformObject& recognizer) const;     // after the platform's initialiser
    void recordGesture(const PlatformObject& recognizer) const; // whenever it fires its actions

private:
    const ControlActions& actions_;
};

} // namespace tallyfoot
