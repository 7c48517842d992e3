// GCC's runtime attaches nothing to objects, so the values are kept here, by the object's address. That
// they go with the object is seen to where every object's end passes: in `dealloc` of the highest class
// below the root that the object belongs to, whose method is stood in for when the first value is
// attached below it. A host that attaches nothing finds nothing changed.

#include "TallyfootObjC/Binding/AssociatedValues.h"

#include "TallyfootObjC/Binding/DispatchTables.h"

#include "Tallyfoot/Platform/Exclusive.h"

#include <objc/message.h>
#include <objc/runtime.h>

#include <atomic>
#include <map>
#include <unordered_map>
#include <utility>

namespace tallyfoot::objc {

namespace {

using Values = std::map<const void*, AssociatedValue>;

class SideTable {
public:
    AssociatedValue find(id object, const void* key) const {
        if (size_.load(std::memory_order_acquire) == 0) return {};
        return objects_.read([&](const auto& objects) -> AssociatedValue {
            const auto values = objects.find((void*)object);
            if (values == objects.end()) return {};
            const auto value = values->second.find(key);
            return value == values->second.end() ? AssociatedValue() : value->second;
        });
    }

    void set(id object, const void* key, const AssociatedValue& value) {
        objects_.modify([&](auto& objects) {
            if (value.index() != 0) {
                objects[(void*)object].insert_or_assign(key, value);
            } else if (const auto values = objects.find((void*)object); values != objects.end()) {
                values->second.erase(key);
                if (values->second.empty()) objects.erase(values);
            }
            size_.store(objects.size(), std::memory_order_release);
        });
    }

    void forget(id object) {
        if (size_.load(std::memory_order_acquire) == 0) return;
        objects_.modify([&](auto& objects) {
            objects.erase((void*)object);
            size_.store(objects.size(), std::memory_order_release);
        });
    }

private:
    std::atomic<std::size_t> size_ = 0;
    Exclusive<std::unordered_map<void*, Values>> objects_;
};

using Dealloc = void (*)(id, SEL);

// Never released: objects end while the process does.
SideTable& sideTable() {
    static auto& table = *new SideTable;
    return table;
}

// What stood in a class before.
struct Former {
    Dealloc method; // nil where the class inherited it
    bool isReplaced = false;
};

Exclusive<std::map<Class, Former>>& formerMethods() {
    static auto& methods = *new Exclusive<std::map<Class, Former>>;
    return methods;
}

// The root's own instances have no class below it.
Class highestBelowRoot(Class first) {
    for (Class next = class_getSuperclass(first); next != Nil && class_getSuperclass(next) != Nil;
         next = class_getSuperclass(next))
        first = next;
    return first;
}

Dealloc inherited(id object, Class aClass) {
    objc_super super{object, class_getSuperclass(aClass)};
    return reinterpret_cast<Dealloc>(objc_msg_lookup_super(&super, @selector(dealloc)));
}

void deallocOf(id object, SEL selector, Class aClass) {
    sideTable().forget(object);
    const auto former = formerMethods().read([&](const auto& methods) -> Dealloc {
        const auto place = methods.find(aClass);
        return place == methods.end() ? nullptr : place->second.method;
    });
    (former ? former : inherited(object, aClass))(object, selector);
}

void deallocBelowRoot(id object, SEL selector) {
    deallocOf(object, selector, highestBelowRoot(object_getClass(object)));
}

void deallocOfRoot(id object, SEL selector) {
    Class root = object_getClass(object);
    while (class_getSuperclass(root) != Nil) root = class_getSuperclass(root);
    deallocOf(object, selector, root);
}

Method ownDealloc(Class aClass) {
    const Method method = class_getInstanceMethod(aClass, @selector(dealloc));
    const Class superclass = class_getSuperclass(aClass);
    return superclass != Nil && class_getInstanceMethod(superclass, @selector(dealloc)) == method ? nullptr : method;
}

void standIn(Class aClass) {
    const bool isRoot = class_getSuperclass(aClass) == Nil;
    const auto body = reinterpret_cast<IMP>(isRoot ? deallocOfRoot : deallocBelowRoot);
    const Method own = ownDealloc(aClass);
    const Former found{own ? reinterpret_cast<Dealloc>(method_getImplementation(own)) : nullptr};
    const bool isReplaced = formerMethods().modify(
        [&](auto& methods) { return methods.try_emplace(aClass, found).first->second.isReplaced; });
    if (isReplaced) return;
    // Not under the lock, for the runtime has its own. So whoever comes while another thread is at it does
    // the same once more: objects of its own could end before that one is done.
    if (own == nullptr) {
        class_addMethod(aClass, @selector(dealloc), body, "v@:");
    } else {
        method_setImplementation(own, body);
        updateDispatchTables(own);
    }
    formerMethods().modify([&](auto& methods) { methods.at(aClass).isReplaced = true; });
}

} // namespace

AssociatedValue associatedValue(id object, const void* key) { return sideTable().find(object, key); }

void setAssociatedValue(id object, const void* key, const AssociatedValue& value) {
    if (value.index() != 0) standIn(highestBelowRoot(object_getClass(object)));
    sideTable().set(object, key, value);
}

} // namespace tallyfoot::objc
