#include <fcntl.h>
#include <unistd.h>

#include <iostream>

#include "commandline.h"

namespace {

/// The first file that a process opens with stderr closed would get its number, and messages in the midst of its
/// data. Opened for reading only, so that a result nobody gets is still a failure to write.
void occupyStandardDescriptors()
{
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", O_RDONLY);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) close(descriptor);
}

}  // namespace

int main(int argc, char** argv)
{
    occupyStandardDescriptors();
    std::ios::sync_with_stdio(false);
    return Host::runProgram({argv + 1, argv + argc}, std::cout);
}
