#include "Contracts/ObjectiveCRuntimeContract.h"
#include "TallyfootObjC/Binding/LiveObjects.h"
#include "TallyfootObjC/Binding/LiveRuntime.h"
#include "TallyfootObjC/Binding/Messenger.h"

#include <vector>

namespace tallyfoot::testing {

namespace {

template <int number>
int answer(id, SEL) {
    return number;
}

class LiveRuntimeHost final : public RuntimeHost {
public:
    ~LiveRuntimeHost() override {
        for (id object : objects_) [object release];
        [pool_ drain];
    }
    ObjectiveCRuntime& runtime() override { return runtime_; }
    ClassRef makeClass(const std::string& name, ClassRef superclass) override {
        const Class above = superclass ? objc::live(superclass) : [NSObject class];
        const Class made = objc_allocateClassPair(above, name.c_str(), 0);
        objc_registerClassPair(made);
        return objc::reference(made);
    }
    ImplementationRef implementation(int number) override {
        constexpr int (*answers[])(id, SEL) = {answer<1>, answer<2>, answer<3>, answer<4>};
        return objc::reference(reinterpret_cast<IMP>(answers[number - 1]));
    }
    ObjectRef makeObject(ClassRef ofClass) override {
        objects_.push_back([[objc::live(ofClass) alloc] init]);
        return objc::reference(objects_.back());
    }
    int send(ObjectRef object, SelectorRef selector) override {
        return objc::send<int>(objc::live(object), objc::live(selector));
    }

private:
    NSAutoreleasePool* pool_ = [[NSAutoreleasePool alloc] init];
    objc::LiveRuntime runtime_;
    std::vector<id> objects_;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Live, ObjectiveCRuntimeContract,
                         ::testing::Values(Implementation<RuntimeHost>{
                             "Live", [] { return std::make_shared<LiveRuntimeHost>(); }}),
                         nameOfImplementation);

} // namespace tallyfoot::testing
