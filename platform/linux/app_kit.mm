#import <AppKit/AppKit.h>
#include <objc/runtime.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "util/string_util.h"

@implementation NSObject
+ (id)alloc {
  return class_createInstance(self, 0);
}
- (id)init {
  return self;
}
- (void)release {
  object_dispose(self);
}
@end

@implementation NSString
- (id)initWithUTF8String:(const char*)utf8 {
  text = utf8;
  return self;
}
- (const char*)UTF8String {
  return text;
}
@end

@implementation NSArray
- (id)initWithStrings:(NSString* const*)strings {
  elements = strings;
  return self;
}
- (id)objectAtIndex:(std::size_t)index {
  return elements[index];
}
@end

@implementation NSNotification
- (id)initWithObject:(id)object {
  sender = object;
  return self;
}
- (id)object {
  return sender;
}
@end

@implementation NSApplication
+ (NSApplication*)sharedApplication {
  static NSApplication* const application = [[NSApplication alloc] init];
  return application;
}

- (void)setDelegate:(id<NSApplicationDelegate>)object {
  delegate = object;
}

- (void)open:(const std::vector<std::string>&)files {
  std::vector<NSString*> names;
  names.reserve(files.size());
  for (const std::string& file : files)
    names.push_back([[NSString alloc] initWithUTF8String:file.c_str()]);

  if (names.size() == 1) {
    [delegate application:self openFile:names[0]];
  } else {
    NSArray* array = [[NSArray alloc] initWithStrings:names.data()];
    [delegate application:self openFiles:array];
    [array release];
  }
  for (NSString* name : names) [name release];
}

- (void)run {
  running = YES;
  const char* documents = std::getenv("ODREL_OPEN_DOCUMENTS");
  std::vector<std::string> requests;
  torvane::Tokenize(documents != nullptr ? documents : "", "\n", &requests);
  for (const std::string& request : requests) {
    std::vector<std::string> files;
    if (torvane::Tokenize(request, "\t", &files) > 0) [self open:files];
  }

  NSNotification* notification = [[NSNotification alloc] initWithObject:self];
  [delegate applicationDidFinishLaunching:notification];
  [notification release];
  while (running) pause();  // no other event ever comes
}

- (void)stop:(id)sender {
  running = NO;
}
@end
