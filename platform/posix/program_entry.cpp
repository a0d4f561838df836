// platform/posix/program_entry.cpp
#include "platform/program_entry.h"

int main(int count, char** arguments) {
    return programMain({arguments, arguments + count});
}
