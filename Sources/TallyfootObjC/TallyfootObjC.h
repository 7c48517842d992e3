#pragma once

// All that an Objective-C host imports.
#import <Foundation/Foundation.h>
#import <TallyfootObjC/Face/ApplicationInfo.h>
#import <TallyfootObjC/Face/Authentication.h>
#import <TallyfootObjC/Face/Environment.h>
#import <TallyfootObjC/Face/EventType.h>
#import <TallyfootObjC/Face/Tallyfoot.h>
#import <TallyfootObjC/Face/UploadConfiguration.h>
