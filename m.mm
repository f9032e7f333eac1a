#import <Foundation/Foundation.h>
#include <dlfcn.h>
int main(int argc, char **argv) { @autoreleasepool { [NSObject class]; void *h = dlopen(argv[1], RTLD_NOW|RTLD_GLOBAL); fprintf(stderr, "dlopen %p %s\n", h, h?"":dlerror()); } }
