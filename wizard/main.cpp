#include "wizard/program.h"

int main(int argumentCount, char** arguments) {
    return tessarine::runProgram(argumentCount, arguments);
}
