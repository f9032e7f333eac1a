/*
 * The system-version call a plug-in may make, and the version the stand-in reports,
 * settable so that a plug-in's version gate can be tried on any system.
 */
#import <Foundation/Foundation.h>

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
