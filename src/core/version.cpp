// The version record; each variant is compiled with its own code and file name.
#include "vekvc/types.h"

namespace {

constexpr VekLibraryVersion kVersion = {
    6, 1, 137, 779, VEKVC_CPU_CODE, "libvekvc-" VEKVC_CPU_CODE ".so.6.1", "6.1 build 137.36", "Sep 29 2009"};

}  // namespace

const VekLibraryVersion* vekvcGetLibVersion(void) { return &kVersion; }
