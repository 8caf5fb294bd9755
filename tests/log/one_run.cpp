// Initialises the library in the directory given, shuts it down and ends at once.
#include "app/k740.h"
#include "sim/namespace_privilege.h"

#include <unistd.h>

int main(int argc, char** argv) {
    k740::sim::EnsureNamespacePrivilege(argv); // into an empty network of its own
    if (argc != 2 || chdir(argv[1]) != 0) { return 2; }
    const bool initialised = K740_Initialize() == 0;
    const bool deinitialised = K740_Deinitialize() == 0;
    return initialised && deinitialised ? 0 : 1;
}
