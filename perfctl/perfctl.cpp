// perfctl: calls one operation of the performance service from a shell. See --help.

#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "Cli.h"

int main(int argc, char** argv) {
    return perfctl::Run(std::vector<std::string>(argv + 1, argv + argc), STDOUT_FILENO, std::cerr);
}
