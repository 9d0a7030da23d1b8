// The part of AppKit and Foundation that the launcher calls, answered on Linux over the Objective-C
// runtime of GCC. The documents to open come from the environment variable ODREL_OPEN_DOCUMENTS:
// one request a line, the files of a request separated by tabs.
#pragma once

#include <objc/objc.h>

#include <cstddef>

__attribute__((objc_root_class))
@interface NSObject {
  Class isa;
}
+ (id)alloc;
- (id)init;
- (void)release;  // frees the object at once: here every object has one owner
@end

@interface NSString : NSObject {
  const char* text;
}
- (id)initWithUTF8String:(const char*)utf8;  // not copied: it must outlive the string
- (const char*)UTF8String;
@end

@interface NSArray : NSObject {
  NSString* const* elements;
}
- (id)initWithStrings:(NSString* const*)strings;  // not copied either
- (id)objectAtIndex:(std::size_t)index;
@end

@interface NSNotification : NSObject {
  id sender;
}
- (id)initWithObject:(id)object;
- (id)object;  // the one who posted the notification
@end

@class NSApplication;

@protocol NSApplicationDelegate
@optional
- (BOOL)application:(NSApplication*)application openFile:(NSString*)filename;
- (BOOL)application:(NSApplication*)application openFiles:(NSArray*)filenames;
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
@end

@interface NSApplication : NSObject {
  id<NSApplicationDelegate> delegate;
  BOOL running;
}
+ (NSApplication*)sharedApplication;                    // created by the first call, never freed
- (void)setDelegate:(id<NSApplicationDelegate>)object;  // not owned
// Hands the delegate the requests of the start, a single file as openFile:, several as openFiles:,
// and then the did-finish-launching notification. Returns once stop: was called.
- (void)run;
- (void)stop:(id)sender;
@end
