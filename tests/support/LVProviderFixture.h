/*
 * A provider to exercise the recent-mailbox list on its own, and real mailboxes for it.
 *
 * The provider is the compiled LorvaneBundle_Provider from the loaded bundle, made
 * without -init (which would install menus) and given its settings by key-value coding.
 * Mailboxes come from a stand-in mail store in a private temporary folder.
 */
#import "LVTestSupport.h"
#import "LVMenuFixture.h"
#import "IMAPAccount.h"
#import "MHMailStore.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "LorvaneBundle_Provider.h"
#import "LorvaneMailbox.h"
#import "LVRecentList.h"

/* Starts Mail with the plug-in, then forgets what that logged, so a test sees only its own lines. */
void LVLoadPluginAndClearLog(void);

/* A provider with an empty list, both deferred-work flags clear and the given settings. */
LorvaneBundle_Provider *LVMakeListProvider(int limit, int sortType, BOOL excludeSpecialMailboxes);
/* The provider's own list array (not a copy). */
NSMutableArray *LVProviderList(LorvaneBundle_Provider *provider);
/* After a test changed listed records' counts or dates by hand: the list files them again. */
void LVRefileRecords(LorvaneBundle_Provider *provider);
BOOL LVFlag(LorvaneBundle_Provider *provider, NSString *field);
void LVSetFlag(LorvaneBundle_Provider *provider, NSString *field, BOOL value);
int LVIntField(LorvaneBundle_Provider *provider, NSString *field);
void LVSetIntField(LorvaneBundle_Provider *provider, NSString *field, int value);

/* A fresh record made by the plug-in's own class (autoreleased). */
LorvaneMailbox *LVMakeRecord(void);
/* Mail's mailbox as the plug-in's interfaces type it. */
static inline id<LVMailboxUid> LVUid(MailboxUid *mailbox)
{
    return (id<LVMailboxUid>)mailbox;
}

/* An empty store in a fresh folder; its accounts (none yet) become Mail's active ones. */
MHMailStore *LVMakeStore(NSString *name);
/* The plug-in loaded, its log cleared, and an empty POP account "Home" in a fresh store. */
class LVHomeAccountTest : public testing::Test {
protected:
    MHMailStore *store = nil;
    MailAccount *home = nil;

    void SetUp() override
    {
        LVLoadPluginAndClearLog();
        store = LVMakeStore(@"home");
        home = [store addAccountNamed:@"Home" type:@"POP" serverPathPrefix:nil];
        ASSERT_TRUE(home != nil);
    }

    MailboxUid *mailbox(NSString *relativePath)
    {
        return [home createMailboxWithRelativePath:relativePath];
    }
};

/* The records' display names, or Mail's names of their mailboxes, in list order. */
NSArray *LVDisplayNames(NSArray *records);
NSArray *LVMailboxNames(NSArray *records);

/* Everything written to standard output between the two calls. */
void LVBeginCapturingStandardOutput(void);
NSString *LVEndCapturingStandardOutput(void);
