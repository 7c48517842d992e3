#include "TallyfootObjC/Face/Records.h"
#include "TallyfootObjC/Support/Dictionaries.h"
#include "TallyfootObjC/Support/Held.h"
#include "TallyfootObjC/Support/Text.h"

using namespace tallyfoot::objc;
using Record = tallyfoot::Environment;

@implementation Environment

- (instancetype)init {
    if ((self = [super init]) != nil) hold(_record, std::make_shared<Record>());
    return self;
}

- (void)dealloc {
    letGo<Record>(_record);
    [super dealloc];
}

- (void)setEndpoint:(Endpoint)endpoint {
    record(self)->setEndpoint(tallyfoot::fromRawValue<tallyfoot::Endpoint>(endpoint));
}

- (NSString*)uploadPath {
    return string(record(self)->uploadPath());
}

- (void)setUploadPath:(NSString*)uploadPath {
    record(self)->setUploadPath(text(uploadPath));
}

- (NSDictionary*)environmentDict {
    const auto found = record(self)->environmentDict();
    return found ? dictionary(*found) : nil;
}

@end

std::shared_ptr<Record> tallyfoot::objc::record(::Environment* object) {
    return held<Record>(object, [::Environment class], &object -> _record);
}

Environment* tallyfoot::objc::newObject(std::shared_ptr<Record> record) {
    ::Environment* object = [::Environment alloc]; // its initialiser would make a record of its own
    hold(object->_record, std::move(record));
    return object;
}
