#include "TallyfootObjC/Face/Records.h"
#include "TallyfootObjC/Support/Held.h"
#include "TallyfootObjC/Support/Text.h"

#include "Tallyfoot/Platform/FatalError.h"

using namespace tallyfoot::objc;
using Record = tallyfoot::UploadConfiguration;

@implementation UploadConfiguration

+ (UploadConfiguration*)defaultConfiguration {
    static UploadConfiguration* const shared = newObject(Record::defaultConfiguration());
    return shared;
}

+ (NSString*)uploadPath {
    return string(Record::fixedUploadPath());
}

- (instancetype)init {
    tallyfoot::fatalError("an UploadConfiguration cannot be made without its values");
}

- (instancetype)initWithSeconds:(NSInteger)seconds eventsCount:(NSInteger)eventsCount {
    if ((self = [super init]) != nil) hold(_record, std::make_shared<Record>(seconds, eventsCount));
    return self;
}

- (void)dealloc {
    letGo<Record>(_record);
    [super dealloc];
}

- (NSString*)uploadPath {
    return optionalString(record(self)->uploadPath());
}

- (void)setUploadPath:(NSString*)uploadPath {
    record(self)->setUploadPath(optionalText(uploadPath));
}

@end

std::shared_ptr<Record> tallyfoot::objc::record(::UploadConfiguration* object) {
    return held<Record>(object, [::UploadConfiguration class], &object -> _record);
}

UploadConfiguration* tallyfoot::objc::newObject(std::shared_ptr<Record> record) {
    ::UploadConfiguration* object = [::UploadConfiguration alloc]; // its initialisers would make a record of their own
    hold(object->_record, std::move(record));
    return object;
}
