#include "input.h"
#include "runner/plan.h"
#include "runner/refusal.h"
#include "scratch.h"
#include "small_batch.h"

using namespace tessarine;

// A file of any bytes is refused, or is a plan whose chain is one of the catalogue and whose
// outputs lie below its destination or are refused for that.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Scratch scratch;
    CommandLine line;
    line.fromPlan =
        scratch.write("plan", std::string_view(reinterpret_cast<const char*>(data), size));
    SilentPlatform platform;
    cBatch batch(platform);
    try {
        const OutputNames outputs = takePlan(batch, line);
        expect(outputs.count() > 0 && outputs.count() == batch.lvSelected.size());
        for (const TrayRow& row : batch.Ltray)
            expect(row.Tag >= 0 && row.Tag <= highestFunctionId);
        expect(!batch.formatExtension().empty());
        checkFolders(outputs);
        for (size_t i = 0; i < outputs.count(); ++i)
            expect(outputs.of(i).starts_with(outputs.destination()) &&
                   outputs.of(i).find("/../") == std::string::npos);
    } catch (const Refusal& refusal) {
        expect(refusal.status() == ExitStatus::nothingStarts);
    }
    return 0;
}
