#include "program.h"

int main(int argc, char** argv) {
    return ZorvicCtl::RunProgram(argc, argv);
}
