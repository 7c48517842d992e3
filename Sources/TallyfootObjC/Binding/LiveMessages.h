#pragma once

#include "Tallyfoot/Capture/ObjectMessages.h"

namespace tallyfoot::objc {

// Messages to the objects of this process. What a method gives back is looked up before it is asked.
class LiveMessages final : public ObjectMessages {
public:
    std::optional<std::string> text(ObjectRef, SelectorRef) override;
    std::optional<std::string> text(ObjectRef, SelectorRef, std::int64_t index) override;
    std::optional<bool> truth(ObjectRef, SelectorRef) override;
    std::optional<std::int64_t> integer(ObjectRef, SelectorRef) override;
    std::optional<double> doubleValue(ObjectRef, SelectorRef) override;
    std::optional<float> floatValue(ObjectRef, SelectorRef) override;
    std::optional<double> timeIntervalSince1970(ObjectRef, SelectorRef) override;
    ObjectRef object(ObjectRef, SelectorRef) override;
    ObjectRef object(ObjectRef, SelectorRef, ObjectRef argument) override;
    ObjectRef object(ObjectRef, SelectorRef, Point argument) override;
    std::optional<Point> point(ObjectRef, SelectorRef, ObjectRef argument) override;
    std::size_t count(ObjectRef array) override;
    ObjectRef objectAtIndex(ObjectRef array, std::size_t index) override;

    void objc_msgSend(ObjectRef, SelectorRef, std::span<const ObjectRef> arguments) override;
    void call(ImplementationRef, ObjectRef, SelectorRef, std::span<const ObjectRef> arguments) override;
    void forwardInvocation(ObjectRef, SelectorRef, std::span<const ObjectRef> arguments) override;
    bool respondsToSelector(ObjectRef, SelectorRef) override;
    void addTarget(ObjectRef recognizer, ObjectRef target, SelectorRef action) override;

    bool callStackSymbolsContain(std::string_view marker) override;
    std::optional<ScreenBounds> mainScreenBounds() override;
};

} // namespace tallyfoot::objc
