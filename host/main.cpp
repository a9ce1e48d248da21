#include <iostream>

#include "commandline.h"

int main(int argc, char** argv)
{
    std::ios::sync_with_stdio(false);
    return Host::runProgram({argv + 1, argv + argc}, std::cout);
}
