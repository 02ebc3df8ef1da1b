#include "pixels/heap.h"
#include "runner/runner.h"

int main(int argc, char** argv) {
    tessarine::keepFreedMemory();
    return tessarine::runProgram(argc, argv);
}
