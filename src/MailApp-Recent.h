#import <AppKit/AppKit.h>

/*
 * Saves the recent list when Mail quits, before Mail's own handler runs.
 * Its +load copies these methods into Mail's MailApp and patches MailApp.
 */
@interface MailApp_LVAdditions : NSObject

+ (void)load;
- (void)LVapplicationWillTerminate:(id)notification;

@end
