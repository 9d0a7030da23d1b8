#include "platform/mac/bootstrap_mac.h"

#import <AppKit/AppKit.h>

#include "launcher/bootstrap.h"

@interface OdrelAppDelegate : NSObject <NSApplicationDelegate>
@end

@implementation OdrelAppDelegate

- (BOOL)application:(NSApplication*)application openFile:(NSString*)filename {
  SetFileToOpen([filename UTF8String]);
  return YES;
}

// The runtime opens one document; the others of the request are dropped.
- (BOOL)application:(NSApplication*)application openFiles:(NSArray*)filenames {
  SetFileToOpen([[filenames objectAtIndex:0] UTF8String]);
  return YES;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  NSApplication* const application = [notification object];
  [application stop:self];
  // The event loop looks whether it was stopped only once it has handled a further event.
  NSEvent* const event = [NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                            location:NSZeroPoint
                                       modifierFlags:0
                                           timestamp:0
                                        windowNumber:0
                                             context:nil
                                             subtype:0
                                               data1:0
                                               data2:0];
  [application postEvent:event atStart:YES];
}

@end

void PlatformSetup() {
  // For this process alone: its arguments are the runtime's, not documents to be opened.
  [[NSUserDefaults standardUserDefaults]
      registerDefaults:[NSDictionary dictionaryWithObject:@"NO"
                                                   forKey:@"NSTreatUnknownArgumentsAsOpen"]];

  NSApplication* const application = [NSApplication sharedApplication];
  // Lives as long as the application object, which does not retain it.
  static OdrelAppDelegate* const delegate = [[OdrelAppDelegate alloc] init];
  [application setDelegate:delegate];
  [application run];
}
