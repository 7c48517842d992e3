#pragma once
// A library that is loaded before this one, and gives threads another account of their call stack.
#import <Foundation/Foundation.h>

extern __attribute__((visibility("default"))) NSArray* earlySymbols;
