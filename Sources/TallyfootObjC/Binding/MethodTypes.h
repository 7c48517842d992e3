#pragma once

#import <Foundation/Foundation.h>

#include <string_view>

namespace tallyfoot::objc {

// What a live object's method gives back and takes, as the compiler has encoded it. Empty where the
// object does not answer the message. May raise what the object raises at the question.
class MethodTypes {
public:
    MethodTypes(id object, SEL selector);

    std::string_view result() const { return result_; }
    std::string_view argument(unsigned index) const; // behind the two that every method has

private:
    const char* types_ = nullptr;
    NSMethodSignature* signature_ = nil; // of what the object passes on
    std::string_view result_;
};

} // namespace tallyfoot::objc
