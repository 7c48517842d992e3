#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace tallyfoot {

template <class Signature>
class FunctionRef;

// A callable borrowed for the length of one call: no allocation, no ownership.
template <class Result, class... Arguments>
class FunctionRef<Result(Arguments...)> {
public:
    template <class Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>,
                             FunctionRef> && std::is_invocable_r_v<Result, Callable&, Arguments...>)
        // NOLINTNEXTLINE: implicit on purpose, as a lambda is passed; copies are excluded above
        FunctionRef(Callable&& callable)
    noexcept
        : object_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
          call_([](void* object, Arguments... arguments) -> Result {
              return (*static_cast<std::remove_reference_t<Callable>*>(object))(std::forward<Arguments>(arguments)...);
          }) {}

    Result operator()(Arguments... arguments) const { return call_(object_, std::forward<Arguments>(arguments)...); }

private:
    void* object_;
    Result (*call_)(void*, Arguments...);
};

} // namespace tallyfoot
