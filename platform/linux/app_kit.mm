#import <AppKit/AppKit.h>
#include <objc/runtime.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "util/string_util.h"

@implementation NSObject
+ (id)alloc {
  return class_createInstance(self, 0);
}
- (id)init {
  return self;
}
@end

@implementation NSString
@synthesize UTF8String;
@end

@implementation NSArray
- (id)objectAtIndex:(NSUInteger)index {
  return elements[index];
}
@end

@implementation NSDictionary
+ (NSDictionary*)dictionaryWithObject:(id)object forKey:(NSString*)key {
  NSDictionary* const dictionary = [[NSDictionary alloc] init];
  dictionary->object = object;
  dictionary->key = key;
  return dictionary;
}
@end

@implementation NSUserDefaults
@synthesize registered;
+ (NSUserDefaults*)standardUserDefaults {
  static NSUserDefaults* const defaults = [[NSUserDefaults alloc] init];
  return defaults;
}
@end

@implementation NSNotification
@synthesize object;
@end

@implementation NSEvent
+ (NSEvent*)otherEventWithType:(NSEventType)type
                      location:(NSPoint)location
                 modifierFlags:(NSUInteger)flags
                     timestamp:(double)time
                  windowNumber:(NSInteger)window
                       context:(id)context
                       subtype:(short)subtype
                         data1:(NSInteger)data1
                         data2:(NSInteger)data2 {
  return [[NSEvent alloc] init];
}
@end

@implementation NSApplication
@synthesize delegate;

+ (NSApplication*)sharedApplication {
  static NSApplication* const application = [[NSApplication alloc] init];
  return application;
}

- (void)open:(const std::vector<std::string>&)files {
  std::vector<NSString*> names;
  for (const std::string& file : files) {
    names.push_back([[NSString alloc] init]);
    names.back().UTF8String = file.c_str();
  }
  NSArray* const array = [[NSArray alloc] init];
  array->elements = names.data();
  const BOOL opened = names.size() == 1 ? [delegate application:self openFile:names[0]]
                                        : [delegate application:self openFiles:array];
  if (!opened) std::fputs("The document could not be opened.\n", stderr);
}

- (void)run {
  running = YES;
  NSDictionary* const defaults = [NSUserDefaults standardUserDefaults].registered;
  std::ifstream arguments;
  if (defaults == nil || defaults->key.UTF8String != std::string("NSTreatUnknownArgumentsAsOpen") ||
      defaults->object.UTF8String != std::string("NO"))
    arguments.open("/proc/self/cmdline");
  std::string argument;
  std::getline(arguments, argument, '\0');  // the program's name
  while (std::getline(arguments, argument, '\0'))
    if (!argument.empty() && argument[0] != '-') [self open:std::vector<std::string>(1, argument)];

  const char* documents = std::getenv("ODREL_OPEN_DOCUMENTS");
  std::vector<std::string> requests, files;
  torvane::Tokenize(documents != nullptr ? documents : "", "\n", &requests);
  for (const std::string& request : requests)
    if (torvane::Tokenize(request, "\t", &files) > 0) [self open:files];

  NSNotification* const notification = [[NSNotification alloc] init];
  notification.object = self;
  [delegate applicationDidFinishLaunching:notification];
  do {
    while (events == 0) pause();
    --events;
  } while (running);
}

- (void)stop:(id)sender {
  running = NO;
}

- (void)postEvent:(NSEvent*)event atStart:(BOOL)first {
  ++events;
}
@end
