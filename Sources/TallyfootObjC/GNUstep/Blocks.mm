// Blocks on GCC's runtime. The libraries at hand do not serve: one copies a block but not what it
// captured, the other takes today's blocks for ones that need no copy. So the four functions that
// compilers call are here, and exported, because a host's blocks call them, too. The layout is that of
// the public block ABI; counts are kept where the other libraries keep them.

#include "TallyfootObjC/Support/Blocks.h"

#include <objc/message.h>
#include <objc/runtime.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#define TALLYFOOT_BLOCK_ABI extern "C" __attribute__((visibility("default")))

TALLYFOOT_BLOCK_ABI void* _Block_copy(const void* block);
TALLYFOOT_BLOCK_ABI void _Block_release(const void* block);
TALLYFOOT_BLOCK_ABI void _Block_object_assign(void* destination, const void* object, int field);
TALLYFOOT_BLOCK_ABI void _Block_object_dispose(const void* object, int field);
extern "C" void* _NSConcreteMallocBlock[];

namespace {

enum Flag : int {
    countMask = 0xFFFF,
    needsFree = 1 << 24, // on the heap, counted
    hasHelpers = 1 << 25,
    isGlobal = 1 << 28
};

enum Field : int { object = 3, block = 7, byReference = 8, byReferenceCaller = 128 };

struct BlockDescriptor {
    unsigned long reserved;
    unsigned long size;
    void (*copy)(void* destination, const void* source);
    void (*dispose)(const void* block);
};

struct BlockLayout {
    void* isa;
    int flags;
    int reserved;
    void (*invoke)(void*, ...);
    const BlockDescriptor* descriptor;
};

// A `__block` variable: shared by its scope and all blocks that use it, and moved when the first is copied.
struct Variable {
    void* isa;
    Variable* forwarding;
    int flags;
    int size;
    void (*keep)(void* destination, const void* source); // these two with helpers only
    void (*destroy)(void* variable);
};

void increment(int& flags) {
    std::atomic_ref<int> count(flags);
    for (int old = count; (old & countMask) != countMask;)
        if (count.compare_exchange_weak(old, old + 1)) return;
}

// Whether it was the last one. A count that is full stays full.
bool decrement(int& flags) {
    std::atomic_ref<int> count(flags);
    for (int old = count; (old & countMask) != countMask && (old & countMask) != 0;)
        if (count.compare_exchange_weak(old, old - 1)) return (old & countMask) == 1;
    return false;
}

void* copyOf(const void* whole, std::size_t size) {
    void* copy = std::malloc(size);
    if (copy == nullptr) std::abort();
    return std::memcpy(copy, whole, size);
}

void send(const void* receiver, const char* name) {
    const id target = (id)receiver;
    const SEL selector = sel_registerName(name);
    reinterpret_cast<id (*)(id, SEL)>(objc_msg_lookup(target, selector))(target, selector);
}

void* copied(const void* source) {
    auto* const original = static_cast<BlockLayout*>(const_cast<void*>(source));
    if (original == nullptr || (original->flags & isGlobal) != 0) return original;
    if ((original->flags & needsFree) != 0) {
        increment(original->flags);
        return original;
    }
    auto* const copy = static_cast<BlockLayout*>(copyOf(original, original->descriptor->size));
    copy->isa = static_cast<void*>(_NSConcreteMallocBlock);
    copy->flags = (original->flags & ~(countMask | needsFree)) | needsFree | 1;
    if ((copy->flags & hasHelpers) != 0) copy->descriptor->copy(copy, original);
    return copy;
}

void released(const void* source) {
    auto* const block = static_cast<BlockLayout*>(const_cast<void*>(source));
    if (block == nullptr || (block->flags & (isGlobal | needsFree)) != needsFree) return;
    if (!decrement(block->flags)) return;
    if ((block->flags & hasHelpers) != 0) block->descriptor->dispose(block);
    std::free(block);
}

Variable* moved(Variable* original) {
    if ((original->forwarding->flags & needsFree) != 0) {
        increment(original->forwarding->flags);
        return original->forwarding;
    }
    auto* const copy = static_cast<Variable*>(copyOf(original, static_cast<std::size_t>(original->size)));
    copy->isa = nullptr;
    copy->flags = (original->flags & ~countMask) | needsFree | 2; // the block's share and its scope's
    copy->forwarding = copy;
    original->forwarding = copy;
    if ((copy->flags & hasHelpers) != 0) original->keep(copy, original);
    return copy;
}

void released(Variable* variable) {
    variable = variable->forwarding;
    if ((variable->flags & needsFree) == 0 || !decrement(variable->flags)) return;
    if ((variable->flags & hasHelpers) != 0) variable->destroy(variable);
    std::free(variable);
}

} // namespace

void* _Block_copy(const void* block) { return copied(block); }

void _Block_release(const void* block) { released(block); }

void _Block_object_assign(void* destination, const void* captured, int field) {
    auto& place = *static_cast<const void**>(destination);
    place = captured;
    if ((field & byReferenceCaller) != 0) return; // what a __block variable refers to is not retained
    if ((field & byReference) != 0) {
        place = moved(static_cast<Variable*>(const_cast<void*>(captured)));
    } else if ((field & block) == block) {
        place = copied(captured);
    } else if ((field & block) == object) {
        send(captured, "retain");
    }
}

void _Block_object_dispose(const void* captured, int field) {
    if ((field & byReferenceCaller) != 0) return;
    if ((field & byReference) != 0) {
        released(static_cast<Variable*>(const_cast<void*>(captured)));
    } else if ((field & block) == block) {
        released(captured);
    } else if ((field & block) == object) {
        send(captured, "release");
    }
}

namespace tallyfoot::objc {

// Not through the exported names, which another library may have taken first.
std::shared_ptr<void> copyBlock(const void* block) {
    return {copied(block), [](void* copy) { released(copy); }};
}

} // namespace tallyfoot::objc
