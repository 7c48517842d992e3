#pragma once

#import "TallyfootObjC/TallyfootObjC.h"

#include "Tallyfoot/Tallyfoot.h"

#include <memory>

// The C++ record that an Objective-C object stands for, and back. An object of another class, or one
// that was never initialised, stands for none.
namespace tallyfoot::objc {

std::shared_ptr<ApplicationInfo> record(::ApplicationInfo* object);
std::shared_ptr<Authentication> record(::Authentication* object);
std::shared_ptr<UploadConfiguration> record(::UploadConfiguration* object);
std::shared_ptr<Environment> record(::Environment* object);

// New and owned by the caller.
::ApplicationInfo* newObject(std::shared_ptr<ApplicationInfo> record);
::UploadConfiguration* newObject(std::shared_ptr<UploadConfiguration> record);
::Environment* newObject(std::shared_ptr<Environment> record);

} // namespace tallyfoot::objc
