#include "TallyfootObjC/Face/Records.h"
#include "TallyfootObjC/Support/Guard.h"
#include "TallyfootObjC/Support/Held.h"
#include "TallyfootObjC/Support/Text.h"

#include "Tallyfoot/Platform/Coder.h"
#include "Tallyfoot/Platform/FatalError.h"

using namespace tallyfoot::objc;
using Record = tallyfoot::ApplicationInfo;

namespace {

// A coder may raise for what it holds in another form; that counts as not there.
std::optional<std::string> decoded(NSCoder* coder, const std::string& key) {
    return guardedValue<std::optional<std::string>>(
        [&] { return optionalText([coder decodeObjectForKey:string(key)]); });
}

} // namespace

@implementation ApplicationInfo

- (instancetype)init {
    tallyfoot::fatalError("an ApplicationInfo cannot be made without its values");
}

- (instancetype)initWithAppName:(NSString*)appName
                          appId:(NSString*)appId
                        bizArea:(NSString*)bizArea
                      bizAreaId:(NSString*)bizAreaId {
    if ((self = [super init]) != nil)
        hold(_record, std::make_shared<Record>(optionalText(appName), text(appId), text(bizArea), text(bizAreaId)));
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    if ((self = [super init]) != nil) {
        tallyfoot::Coder fields(Record::archiveClassName);
        for (const auto* key : {"appName", "appId", "bizArea", "bizAreaId"})
            if (auto field = decoded(coder, key)) fields.encode(*std::move(field), key);
        hold(_record, std::make_shared<Record>(fields));
    }
    return self;
}

- (void)encodeWithCoder:(NSCoder*)coder {
    tallyfoot::Coder fields(Record::archiveClassName);
    record(self)->encode(fields);
    for (const auto& [key, field] : fields.fields()) [coder encodeObject:string(field) forKey:string(key)];
}

- (void)dealloc {
    letGo<Record>(_record);
    [super dealloc];
}

- (NSString*)appName {
    return string(record(self)->appName());
}

- (NSString*)appId {
    return string(record(self)->appId());
}

- (NSString*)bizArea {
    return string(record(self)->bizArea());
}

- (NSString*)bizAreaId {
    return string(record(self)->bizAreaId());
}

@end

std::shared_ptr<Record> tallyfoot::objc::record(::ApplicationInfo* object) {
    return held<Record>(object, [::ApplicationInfo class], &object -> _record);
}

ApplicationInfo* tallyfoot::objc::newObject(std::shared_ptr<Record> record) {
    ::ApplicationInfo* object = [::ApplicationInfo alloc]; // its initialisers would make a record of their own
    hold(object->_record, std::move(record));
    return object;
}
