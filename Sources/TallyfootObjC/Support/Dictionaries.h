#pragma once

#include "Tallyfoot/Events/Attributes.h"
#include "Tallyfoot/Events/CustomAttributes.h"
#include "Tallyfoot/Platform/PropertyList.h"

#import <Foundation/Foundation.h>

#include <map>
#include <string>
#include <vector>

// Collections of the two languages in each other's terms. What an argument of another class holds is
// nothing; an entry that cannot be converted is dropped. None raises: a collection that does so ends there.
namespace tallyfoot::objc {

// By record key; unknown keys and values that are no texts are dropped.
Attributes attributes(NSDictionary* dictionary);

std::map<std::string, std::string> texts(NSDictionary* dictionary);
std::vector<std::string> texts(NSArray* array);

// None where there is no dictionary, and for one that JSON does not know: with a key that is no text, an
// object of another kind, an ill-formed text, too many levels, or changed by another thread meanwhile.
CustomAttributes customAttributes(NSDictionary* dictionary);

// Autoreleased.
NSDictionary* dictionary(const PropertyList::Dictionary& dictionary);

} // namespace tallyfoot::objc
