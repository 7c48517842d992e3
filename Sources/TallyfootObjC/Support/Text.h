#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot::objc {

bool isText(id object);
bool isDictionary(id object);

// As UTF-8; a surrogate without its other half becomes U+FFFD. Neither raises.
std::string text(id object);                        // empty for nil, for what is no text and for one that raises
std::optional<std::string> optionalText(id object); // none for these

// The same where every surrogate has its other half; else none.
std::optional<std::string> wellFormedText(NSString* string);

// Autoreleased; what is ill-formed becomes U+FFFD.
NSString* string(std::string_view text);
NSString* optionalString(const std::optional<std::string>& text);

} // namespace tallyfoot::objc
