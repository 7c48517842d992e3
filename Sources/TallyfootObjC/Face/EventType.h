#pragma once

#import <Foundation/Foundation.h>

// What kind of event it is. A number that is none of these is fatal when an event is given no "evtType".
typedef NS_ENUM(NSInteger, EventType) {
    EventTypeCrash = 0,
    EventTypeScreen = 1,
    EventTypeAction = 2,
    EventTypeGesture = 3,
    EventTypeSelection = 4,
    EventTypeSwipe = 5,
    EventTypeScroll = 6,
    EventTypeProgress = 7,
    EventTypeAlert = 8
};
