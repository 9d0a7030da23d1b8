// The part of AppKit and Foundation that the launcher calls, answered on Linux over the Objective-C
// runtime of GCC. All objects live until the process ends.
#pragma once

#include <objc/objc.h>

using NSInteger = long;
using NSUInteger = unsigned long;

struct NSPoint {
  double x, y;
};
const NSPoint NSZeroPoint = {0, 0};

__attribute__((objc_root_class))
@interface NSObject {
  Class isa;
}
+ (id)alloc;
- (id)init;
@end

// The compiler lays out the literals @"..." as objects of this class.
@interface NSString : NSObject {
  const char* UTF8String;
  unsigned int length;
}
@property(nonatomic, assign) const char* UTF8String;
@end

@interface NSArray : NSObject {
 @public
  NSString* const* elements;
}
- (id)objectAtIndex:(NSUInteger)index;
@end

@interface NSDictionary : NSObject {
 @public
  NSString *object, *key;
}
+ (NSDictionary*)dictionaryWithObject:(id)object forKey:(NSString*)key;
@end

@interface NSUserDefaults : NSObject {
  NSDictionary* registered;
}
+ (NSUserDefaults*)standardUserDefaults;
@property(nonatomic, assign, setter=registerDefaults:) NSDictionary* registered;
@end

@interface NSNotification : NSObject {
  id object;
}
@property(nonatomic, assign) id object;  // the one who posted the notification
@end

enum NSEventType { NSEventTypeApplicationDefined = 15 };

@interface NSEvent : NSObject
+ (NSEvent*)otherEventWithType:(NSEventType)type
                      location:(NSPoint)location
                 modifierFlags:(NSUInteger)flags
                     timestamp:(double)time
                  windowNumber:(NSInteger)window
                       context:(id)context
                       subtype:(short)subtype
                         data1:(NSInteger)data1
                         data2:(NSInteger)data2;
@end

@class NSApplication;

@protocol NSApplicationDelegate
- (BOOL)application:(NSApplication*)application openFile:(NSString*)filename;
- (BOOL)application:(NSApplication*)application openFiles:(NSArray*)filenames;
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
@end

@interface NSApplication : NSObject {
  id<NSApplicationDelegate> delegate;
  NSUInteger events;  // posted and not yet handled
  BOOL running;
}
@property(nonatomic, assign) id<NSApplicationDelegate> delegate;
+ (NSApplication*)sharedApplication;
// Hands the delegate the open requests of the start, and tells the user of a NO: the arguments
// without a leading "-", unless the default NSTreatUnknownArgumentsAsOpen is "NO", and those of the
// variable ODREL_OPEN_DOCUMENTS, one a line, its files separated by tabs. Then sends the
// did-finish-launching notification, and returns once an event was handled with stop: called.
- (void)run;
- (void)stop:(id)sender;
- (void)postEvent:(NSEvent*)event atStart:(BOOL)first;
@end
