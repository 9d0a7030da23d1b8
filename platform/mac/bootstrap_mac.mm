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
  [[notification object] stop:self];
}

@end

void PlatformSetup() {
  NSApplication* application = [NSApplication sharedApplication];
  // Lives as long as the application object, which does not retain it.
  static OdrelAppDelegate* const delegate = [[OdrelAppDelegate alloc] init];
  [application setDelegate:delegate];
  [application run];
}
