/*
 * How the stand-in Mail loads plug-ins: its classes messaged first, as a running Mail's
 * are; then each bundle loaded, and one instance made of each MVMailBundle subclass it
 * registered.
 */
#import <Foundation/Foundation.h>

/* Messages every Mail class, as a running Mail has done long before it loads plug-ins. */
void MHPrepareMailClassesForPlugins(void);
/* Loads one bundle (absolute path) and makes one instance of each class it registered. */
NSBundle *MHLoadMailBundle(NSString *path);
/* Every *.mailbundle in "Mail/Bundles" of the user's Library folder, by name. */
NSArray *MHInstalledMailBundlePaths(void);
