// tools/main.cpp
#include <iostream>

#include "platform/program_entry.h"
#include "tools/command_line.h"

int programMain(const std::vector<std::string>& arguments) {
    return runTools(arguments, std::cout, std::cerr);
}
