/* Loads one variant of the library by its path: for plug-ins and tests that do not let the loader choose.
 *   load_variant /usr/lib/x86_64-linux-gnu/libvekvc-sf.so.6.1 */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "vekvc.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: load_variant LIBRARY\n");
        return 2;
    }
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const VekLibraryVersion* (*version)(void);
    *(void**)&version = dlsym(library, "vekvcGetLibVersion");
    if (version == NULL) return 1;
    printf("%s, %s\n", version()->libraryName, version()->versionText);
    const int right = strstr(argv[1], version()->libraryName) != NULL;
    dlclose(library);
    return right ? 0 : 1;
}
