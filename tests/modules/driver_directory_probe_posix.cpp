// Says whether it runs with another user's rights, and which driver directory it finds.
#include <unistd.h>

#include <cstdio>

#include "platform/driver_directory.h"

int main() {
    std::printf("%s %s\n", getuid() == geteuid() ? "plain" : "privileged", zant::system::getDriverDirectory().c_str());
    std::fflush(stdout);
    _exit(0);  // the leak sanitizer cannot look into a process of more rights
}
