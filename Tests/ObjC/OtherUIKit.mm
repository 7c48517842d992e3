#include "ObjC/OtherUIKit.h"

#include <objc/message.h>

namespace tallyfoot::testing {

std::atomic<int> ObjCOtherUIKit::delivered = 0;

Class ObjCOtherUIKit::make(const char* name, const char* superclass) {
    const Class made = objc_allocateClassPair(objc_lookUpClass(superclass), name, 0);
    objc_registerClassPair(made);
    return made;
}

id ObjCOtherUIKit::object(const char* className) { return [[[objc_lookUpClass(className) alloc] init] autorelease]; }

void ObjCOtherUIKit::makeApplication() {
    make("UIApplication");
    add("UIApplication", "sendAction:to:from:forEvent:", (std::string(@encode(BOOL)) + "@::@@@").c_str(),
        [](id, SEL, SEL, id, id, id) -> BOOL {
            ++delivered;
            return YES;
        });
}

bool ObjCOtherUIKit::act(id sender, const char* action) {
    const id application = object("UIApplication");
    const SEL selector = sel_registerName("sendAction:to:from:forEvent:");
    using Send = BOOL (*)(id, SEL, SEL, id, id, id);
    return reinterpret_cast<Send>(objc_msg_lookup(application, selector))(application, selector,
                                                                          sel_registerName(action), nil, sender, nil)
           != NO;
}

void ObjCOtherUIKit::makeButton(id (*title)(id, SEL)) {
    make("UIButton");
    class_addMethod(objc_lookUpClass("UIButton"), sel_registerName("currentTitle"), reinterpret_cast<IMP>(title),
                    "@@:");
}

} // namespace tallyfoot::testing
