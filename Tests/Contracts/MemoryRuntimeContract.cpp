#include "Contracts/ObjectiveCRuntimeContract.h"
#include "Support/MemoryRuntime.h"

#include <array>
#include <cstdint>

namespace tallyfoot::testing {

namespace {

class MemoryRuntimeHost final : public RuntimeHost {
public:
    MemoryRuntimeHost() {
        for (std::int64_t number = 1; number <= 4; ++number)
            implementations_[static_cast<std::size_t>(number - 1)] =
                runtime_.implementation([number](const auto&) { return MemoryRuntime::Value(number); });
    }
    ObjectiveCRuntime& runtime() override { return runtime_; }
    ClassRef makeClass(const std::string& name, ClassRef superclass) override {
        return runtime_.addClass(name.c_str(), superclass ? runtime_.class_getName(superclass) : "NSObject");
    }
    ImplementationRef implementation(int number) override {
        return implementations_.at(static_cast<std::size_t>(number - 1));
    }
    ObjectRef makeObject(ClassRef ofClass) override { return runtime_.make(runtime_.class_getName(ofClass)); }
    int send(ObjectRef object, SelectorRef selector) override {
        return static_cast<int>(std::get<std::int64_t>(runtime_.send(object, runtime_.sel_getName(selector))));
    }

private:
    MemoryRuntime runtime_;
    std::array<ImplementationRef, 4> implementations_;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(All, ObjectiveCRuntimeContract,
                         ::testing::Values(Implementation<RuntimeHost>{
                             "Memory", [] { return std::make_shared<MemoryRuntimeHost>(); }}),
                         nameOfImplementation);

} // namespace tallyfoot::testing
