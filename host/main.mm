#import "PluginHost.h"

int main(int argc, const char **argv)
{
    return NSApplicationMain(argc, argv);
}
