/*
 * Mail's accounts pane. Mail tells it when accounts are added or removed; it then shows
 * the accounts anew (here: the viewers' mailbox lists and the "Go To" menu).
 */
#import <Foundation/Foundation.h>

@interface AccountPreferences : NSObject

+ (AccountPreferences *)sharedPreferences;

/* Called after the active accounts changed. */
- (void)accountsDidChange:(id)sender;

@end
