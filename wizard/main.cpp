#include "pixels/heap.h"
#include "wizard/program.h"

int main(int argumentCount, char** arguments) {
    tessarine::keepFreedMemory();
    return tessarine::runProgram(argumentCount, arguments);
}
