#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tallyfoot::objc {

using Code = std::uintptr_t;

// Where on the stack a call keeps the address that it returns to, and that address.
struct Return {
    const Code* place;
    Code address;
};

// What was found out about call stacks, for when the same calls are under way once more, in the same places,
// as they are each time that a finger moves. Which calls those are is asked by comparing a word a call,
// a hundredth of what unwinding takes. From the innermost outwards, and no further than to the first that
// differs: what is compared is then a return address, too, because the calls inside it are the same ones.
// Only a function whose frame is not of one size could lead past it, to a place where an address of an
// earlier call was left; it would have to be so at each place. One thread.
class KnownStacks {
public:
    // The return addresses of the calls that this one is in begin at the innermost. None when not known.
    std::optional<bool> answer(const Code* innermost) const noexcept;
    // The returns are in order. Kept if they lie where answer() looks for them.
    void remember(const Code* innermost, std::vector<Return> returns, bool answer);

private:
    struct Stack {
        std::vector<Return> returns;
        bool answer = false;
    };

    static constexpr std::size_t mostReturns = 256;

    std::array<Stack, 4> stacks_; // of a control that is dragged and let go, and of another one
    std::size_t oldest_ = 0;
};

} // namespace tallyfoot::objc
