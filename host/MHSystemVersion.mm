#import "MHSystemVersion.h"

static int systemVersion = 0x10C6;
static OSErr gestaltStatus = 0;

extern "C" __attribute__((visibility("default"))) OSErr Gestalt(OSType selector, int *response)
{
    if (selector != gestaltSystemVersion)
        return -5551; // gestaltUndefSelectorErr
    if (gestaltStatus != 0)
        return gestaltStatus;
    *response = systemVersion;
    return 0;
}

void MHSetSystemVersion(int version)
{
    systemVersion = version;
}

void MHSetGestaltStatus(OSErr status)
{
    gestaltStatus = status;
}
