#include <unistd.h>

#include "imagefiles/worker/helper.h"

int main(int argc, char** argv) {
    // What libraries do at a program's end is lost time here: the kernel frees everything.
    _exit(tessarine::runHelper(argc, argv, nullptr));
}
