/*
 * How the stand-in Mail treats plug-ins: its plug-in base class, the system-version
 * call a plug-in may make, and the loading sequence Mail follows.
 */
#import <AppKit/AppKit.h>

typedef unsigned int OSType;
typedef short OSErr;
enum { gestaltSystemVersion = 0x73797376 /* 'sysv' */ };

/* Carbon's system-version call, exported for plug-ins to find by symbol. */
#ifdef __cplusplus
extern "C"
#endif
OSErr Gestalt(OSType selector, int *response);
/* What Gestalt reports: a version such as 0x1068 for 10.6.8, or a failure status. */
void MHSetSystemVersion(int version);
void MHSetGestaltStatus(OSErr status);

/* Mail's plug-in base class. A plug-in's class sends +registerBundle to be made. */
@interface MVMailBundle : NSObject
+ (void)registerBundle;
/* Every class registered so far, in order, and the instances made of them. */
+ (NSArray *)registeredBundleClasses;
+ (NSArray *)bundleInstances;
@end

/* Messages every Mail class, as a running Mail has done long before it loads plug-ins. */
void MHPrepareMailClassesForPlugins(void);
/* Loads one bundle (absolute path) and makes one instance of each class it registered. */
NSBundle *MHLoadMailBundle(NSString *path);
/* Every *.mailbundle in "Mail/Bundles" of the user's Library folder, by name. */
NSArray *MHInstalledMailBundlePaths(void);
