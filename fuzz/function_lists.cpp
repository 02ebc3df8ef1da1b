#include <cmath>
#include <cstddef>
#include <cstdint>

#include "batch/list_files.h"
#include "batch/texts.h"
#include "expect.h"
#include "pixels/failures.h"

using namespace tessarine;

// A record that was read once is written and read without any further change, and its numbers
// survive their way through the columns of a row.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    for (const FunctionRecord& record :
         parseFunctionList({reinterpret_cast<const char*>(data), size})) {
        const std::string bytes = record.toBytes();
        expect(bytes.size() == FunctionRecord::bytesOnDisk);
        expect(FunctionRecord::fromBytes(bytes).toBytes() == bytes);
        attempt([&] { toInteger32(record.id); });
        attempt([&] { toTruth(record.style); });
        if (std::isfinite(record.x)) expect(toSingle(singleText(record.x)) == record.x);
    }
    return 0;
}
