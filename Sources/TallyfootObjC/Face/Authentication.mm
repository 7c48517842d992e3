#include "TallyfootObjC/Face/Records.h"
#include "TallyfootObjC/Support/Held.h"
#include "TallyfootObjC/Support/Text.h"

#include "Tallyfoot/Platform/FatalError.h"

using namespace tallyfoot::objc;
using Record = tallyfoot::Authentication;

@implementation Authentication

- (instancetype)init {
    tallyfoot::fatalError("an Authentication cannot be made without its values");
}

- (instancetype)initWithUserId:(NSString*)userId
           authenticationToken:(NSString*)authenticationToken
                 userLogOnTime:(NSString*)userLogOnTime {
    if ((self = [super init]) != nil)
        hold(_record, std::make_shared<Record>(text(userId), text(authenticationToken), optionalText(userLogOnTime)));
    return self;
}

- (void)dealloc {
    letGo<Record>(_record);
    [super dealloc];
}

- (NSString*)userId {
    return string(record(self)->userId());
}

- (NSString*)authenticationToken {
    return string(record(self)->authenticationToken());
}

- (NSString*)userLogOnTime {
    return optionalString(record(self)->userLogOnTime());
}

@end

std::shared_ptr<Record> tallyfoot::objc::record(::Authentication* object) {
    return held<Record>(object, [::Authentication class], &object -> _record);
}
