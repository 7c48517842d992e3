#pragma once

#include "Support/HostBundle.h"
#include "Support/TemporaryFolder.h"
#import "TallyfootObjC/TallyfootObjC.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace tallyfoot::testing {

// A host process of its own, written in Objective-C: every test runs in one, with its own folders and
// an autorelease pool around it.
class ObjCHost : public ::testing::Test {
protected:
    ObjCHost();
    ~ObjCHost() override;

    void start(); // the application "Shop", a user, an upload address where nobody listens
    std::vector<nlohmann::json> records(const std::string& appName = "Shop") const;
    // What was recorded since the last time: "type category action label", joined with "; ". What an
    // event lacks is left out.
    std::string recorded();

    TemporaryFolder root_;
    HostBundle bundle_{"Bundled"};

private:
    std::size_t seen_ = 0;
    NSAutoreleasePool* pool_ = [[NSAutoreleasePool alloc] init];
};

NSString* loneSurrogate(); // "a", half a character, "b"

} // namespace tallyfoot::testing

// These raise at every question, as objects of the host's may.
@interface RaisingDictionary : NSDictionary
@end
@interface RaisingText : NSString
@end
@interface RaisingProxy : NSProxy
- (instancetype)init;
@end

// A dictionary of the host's own class, with no more than such a class must have. What it gives
// stays until the autorelease pool of whoever asked goes.
@interface PlainDictionary : NSDictionary {
    NSDictionary* _entries;
}
- (instancetype)initWithEntries:(NSDictionary*)entries;
@end

// The same of an array.
@interface PlainArray : NSArray {
    NSArray* _elements;
}
- (instancetype)initWithElements:(NSArray*)elements;
@end
