#include "Tallyfoot/Capture/Interception.h"

namespace tallyfoot {

namespace {

class AutoreleasePool {
public:
    explicit AutoreleasePool(ObjectiveCRuntime& runtime)
        : runtime_(runtime), pool_(runtime.objc_autoreleasePoolPush()) {}
    ~AutoreleasePool() { runtime_.objc_autoreleasePoolPop(pool_); }
    AutoreleasePool(const AutoreleasePool&) = delete;
    AutoreleasePool& operator=(const AutoreleasePool&) = delete;

private:
    ObjectiveCRuntime& runtime_;
    void* pool_;
};

} // namespace

void Interception::swizzle(SelectorRef original, SelectorRef replacement, ClassRef forClass) const {
    const auto originalMethod = runtime_.class_getInstanceMethod(forClass, original);
    if (!originalMethod) return;
    const auto replacementMethod = runtime_.class_getInstanceMethod(forClass, replacement);
    if (!replacementMethod) return;
    const auto inherited = runtime_.method_getImplementation(originalMethod);
    if (runtime_.class_addMethod(forClass, original, runtime_.method_getImplementation(replacementMethod),
                                 runtime_.method_getTypeEncoding(replacementMethod)))
        runtime_.class_replaceMethod(forClass, replacement, inherited, runtime_.method_getTypeEncoding(originalMethod));
    else
        runtime_.method_exchangeImplementations(originalMethod, replacementMethod);
}

bool Interception::hasMethod(ObjectRef object, SelectorRef selector) const {
    return static_cast<bool>(runtime_.class_getInstanceMethod(runtime_.classForCoder(object), selector));
}

void Interception::addInterceptMethod(SelectorRef original, SelectorRef replacement, ClassRef forClass,
                                      SelectorRef renameOriginal, const char* types) const {
    const AutoreleasePool pool(runtime_);
    const auto body = runtime_.class_getInstanceMethod(forClass, replacement);
    if (!body) return;
    const auto implementation = runtime_.method_getImplementation(body);
    intercept(original, implementation, forClass, renameOriginal, types);
}

void Interception::intercept(SelectorRef original, ImplementationRef replacement, ClassRef forClass,
                             SelectorRef renameOriginal, const char* types) const {
    const auto method = runtime_.class_getInstanceMethod(forClass, original);
    if (!method) {
        runtime_.class_addMethod(forClass, original, replacement, types);
        return;
    }
    // In place already: kept under `renameOriginal`, the replacement would call itself for ever.
    const auto kept = runtime_.method_getImplementation(method);
    if (kept == replacement) return;
    // In place behind another library's, which came later and calls it: setting it again would cut that one off.
    const auto owner = definingClass(forClass, original);
    if (definingClass(forClass, renameOriginal) == forClass || definingClass(owner, renameOriginal) == owner) return;

    runtime_.method_setImplementation(method, replacement);
    runtime_.class_addMethod(forClass, renameOriginal, kept, types);
    // The class that was changed, too: its own instances and its other subclasses look for the kept one.
    if (owner != forClass) runtime_.class_addMethod(owner, renameOriginal, kept, types);
}

ClassRef Interception::definingClass(ClassRef first, SelectorRef selector) const {
    // Asked first, for some runtimes look through each list of methods up to the root's to find that there is none.
    if (!runtime_.class_respondsToSelector(first, selector)) return {};
    const auto method = runtime_.class_getInstanceMethod(first, selector);
    auto owner = first;
    for (auto next = runtime_.class_getSuperclass(owner); next; next = runtime_.class_getSuperclass(owner)) {
        if (!runtime_.class_respondsToSelector(next, selector)) break;
        if (runtime_.class_getInstanceMethod(next, selector) != method) break;
        owner = next;
    }
    return owner;
}

} // namespace tallyfoot
