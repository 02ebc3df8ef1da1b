#include <cstdio>
#include <exception>

#include "functions_page.h"

// Writes the pages of docs/ that are made from the program's own tables.

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: tessarine-docs FOLDER SAMPLE\n", stderr);
        return 2;
    }
    try {
        tessarine::writeFunctionsPage(argv[1], argv[2]);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tessarine-docs: %s\n", failure.what());
        return 1;
    }
    return 0;
}
