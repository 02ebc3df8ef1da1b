#include <cstddef>
#include <cstdint>

#include "batch/startup_record.h"
#include "expect.h"

using namespace tessarine;

// Any bytes are a record, and are written back as they are, filled up with 0 bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    const StartupRecord record = StartupRecord::fromBytes(bytes);
    bytes.resize(StartupRecord::bytesOnDisk, '\0');
    expect(record.toBytes() == bytes);
    expect(record.lastFolder.rightTrimmed().size() <= FixedText::length);
    return 0;
}
