#include "TallyfootObjC/GNUstep/KnownStacks.h"

#include <algorithm>
#include <utility>

namespace tallyfoot::objc {

namespace {

// Nothing of these frames is ours: no sanitizer knows their layout.
__attribute__((no_sanitize("address"))) bool isInPlace(const Return& one) noexcept { return *one.place == one.address; }

bool areInPlace(const std::vector<Return>& returns) noexcept {
    return std::all_of(returns.begin(), returns.end(), isInPlace);
}

} // namespace

std::optional<bool> KnownStacks::answer(const Code* innermost) const noexcept {
    for (const auto& stack : stacks_)
        if (!stack.returns.empty() && stack.returns.front().place == innermost && areInPlace(stack.returns))
            return stack.answer;
    return std::nullopt;
}

// Elsewhere than on x86-64 a return address may lie at another distance from its frame's end.
void KnownStacks::remember(const Code* innermost, std::vector<Return> returns, bool answer) {
    if (returns.empty() || returns.size() > mostReturns || returns.front().place != innermost) return;
    if (!areInPlace(returns)) return;
    stacks_[oldest_] = {std::move(returns), answer};
    oldest_ = (oldest_ + 1) % stacks_.size();
}

} // namespace tallyfoot::objc
