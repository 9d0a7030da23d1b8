#import <AppKit/AppKit.h>
#include <objc/runtime.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

// The pieces of the input between the delimiters, without the empty ones.
std::vector<std::string> Split(std::istream&& input, char delimiter) {
  std::vector<std::string> pieces;
  for (std::string piece; std::getline(input, piece, delimiter);)
    if (!piece.empty()) pieces.push_back(piece);
  return pieces;
}

}  // namespace

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
@synthesize elements;
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
- (void)registerDefaults:(NSDictionary*)defaults {
  registered = defaults;
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
  array.elements = names.data();
  const BOOL opened = names.size() == 1 ? [delegate application:self openFile:names[0]]
                                        : [delegate application:self openFiles:array];
  if (!opened) std::fputs("The document could not be opened.\n", stderr);
}

- (void)openArguments {
  NSDictionary* const defaults = [NSUserDefaults standardUserDefaults].registered;
  if (defaults != nil && defaults->key.UTF8String == std::string("NSTreatUnknownArgumentsAsOpen") &&
      ((NSString*)defaults->object).UTF8String == std::string("NO"))
    return;

  const std::vector<std::string> words = Split(std::ifstream("/proc/self/cmdline"), '\0');
  for (std::size_t i = 1; i < words.size(); ++i)
    if (words[i][0] != '-') [self open:std::vector<std::string>(1, words[i])];
}

- (void)run {
  running = YES;
  [self openArguments];
  const char* documents = std::getenv("ODREL_OPEN_DOCUMENTS");
  for (const std::string& request : Split(std::istringstream(documents ? documents : ""), '\n')) {
    const std::vector<std::string> files = Split(std::istringstream(request), '\t');
    if (!files.empty()) [self open:files];
  }

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
