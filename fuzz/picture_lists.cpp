#include <cstddef>
#include <cstdint>

#include "batch/list_files.h"
#include "batch/texts.h"
#include "expect.h"

using namespace tessarine;

// Whatever a record holds comes out as a path whose parts can be told.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    for (const std::string& path : parsePictureList({reinterpret_cast<const char*>(data), size})) {
        expect(path.size() <= pictureRecordBytes);
        expect(path == trimmed(path));
        const std::string file = fileNameOf(path);
        expect(extensionOf(path).size() <= file.size());
        expect(folderOf(path).size() + file.size() <= path.size());
    }
    return 0;
}
