#include "runner/runner.h"

int main(int argc, char** argv) { return tessarine::runProgram(argc, argv); }
