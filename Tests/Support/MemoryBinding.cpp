#include "Support/MemoryBinding.h"

#include <utility>

namespace tallyfoot::testing {

using Value = MemoryRuntime::Value;
using Invocation = MemoryRuntime::Invocation;

MethodBodies::Code MemoryBinding::code(MethodBody body) {
    auto& made = implementations_[body];
    if (!made) made = runtime_.implementation([this, body](const Invocation& call) { return run(body, call); });
    return {made, "v@:"};
}

Value MemoryBinding::run(MethodBody body, const Invocation& call) {
    const auto forward = [&] { return runtime_.send(call.self, selectorName(body), call.arguments); };
    const auto argument = [&](std::size_t place) {
        return place < call.arguments.size() ? call.object(place) : ObjectRef{};
    };
    switch (body) {
    case MethodBody::customName: return capture_->customName(call.self);
    case MethodBody::setCustomName:
        capture_->setCustomName(call.self, std::get<std::string>(call.arguments[0]));
        return {};
    case MethodBody::logEnabled: return capture_->logEnabled(call.self);
    case MethodBody::setLogEnabled: capture_->setLogEnabled(call.self, std::get<bool>(call.arguments[0])); return {};
    case MethodBody::initWithTarget:
        return capture_->swizzle_initWithTarget([&] { return std::get<ObjectRef>(forward()); });
    case MethodBody::gestureAction: capture_->swizzleGestureAction(call.self); return {};
    case MethodBody::sendAction:
        return capture_->swizzledSendAction(std::get<SelectorRef>(call.arguments[0]), call.object(2),
                                            [&] { return std::get<bool>(forward()); });
    case MethodBody::viewWillAppear: capture_->swizzledViewWillAppear(call.self); return {};
    case MethodBody::viewWillDisappear: capture_->swizzledViewWillDisappear(call.self); return {};
    default: break;
    }
    if (body < MethodBody::tableViewSelection)
        capture_->swizzledSetter(body, call.self, argument(0));
    else
        capture_->swizzledCallback(body, call.self, argument(0), argument(1));
    return {};
}

} // namespace tallyfoot::testing
