#include <cmath>

#include "input.h"
#include "scratch.h"
#include "small_batch.h"

using namespace tessarine;

namespace {

/// A record that was read once is written and read without any further change, and its numbers
/// survive their way through the columns of a row.
void checkRecord(const FunctionRecord& record) {
    const std::string bytes = record.toBytes();
    expect(bytes.size() == FunctionRecord::bytesOnDisk);
    expect(FunctionRecord::fromBytes(bytes).toBytes() == bytes);
    attempt([&] { toInteger32(record.id); });
    attempt([&] { toTruth(record.style); });
    if (std::isfinite(record.x)) expect(toSingle(singleText(record.x)) == record.x);
}

class ListBatch : public SmallBatch {
  public:
    using SmallBatch::SmallBatch;

    std::optional<std::string> saveDialog(const std::string&) override { return saveTo; }
    std::string saveTo;
};

}  // namespace

// A list of any bytes goes into the tray and through the preview, its rows through the run, and
// the chain out into a list that is read and written as it stands from then on.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Scratch scratch;
    std::vector<FunctionRecord> records =
        parseFunctionList({reinterpret_cast<const char*>(data), size});
    for (const FunctionRecord& record : records)
        checkRecord(record);

    constexpr size_t mostRows = 8;  // each of which is applied several times
    if (records.size() > mostRows) records.resize(mostRows);
    boundSizes(records);
    scratch.remove("bounded.qfk");
    writeFunctionList(scratch.path("bounded.qfk"), records);

    const PixelBuffer picture = randomPicture(1 + static_cast<int32_t>(size % 23), 17, 1);
    ListBatch program(picture);
    cBatch& batch = program.batch;
    batch.sheetReady = true;
    batch.sbDegrees = static_cast<int16_t>(size % 361 - 180);
    batch.OpenFunctionList(scratch.path("bounded.qfk"));
    expect(batch.Ltray.size() == records.size());
    expect(batch.LSelectedFunctions.size() == records.size());
    expect(batch.workBits.width() <= longestSide && batch.workBits.height() <= longestSide);
    expect(batch.iDst.width() == picture.width() && batch.iDst.height() == picture.height());

    const auto save = [&](const char* name) {
        scratch.remove(name);
        program.saveTo = scratch.path(name);
        batch.SaveFunctionList();
        return records.empty() ? std::string() : scratch.read(name);
    };
    program.takeIn(picture);
    const std::string saved = save("saved.qfk");
    expect(saved.size() == records.size() * FunctionRecord::bytesOnDisk);
    batch.OpenFunctionList(scratch.path(records.empty() ? "none.qfk" : "saved.qfk"));
    expect(save("again.qfk") == saved);

    // The run, on a picture of another size than the preview.
    program.takeIn(randomPicture(7, 31, 2));
    for (size_t i = 0; i < batch.Ltray.size(); ++i) {
        int16_t id = 0;
        if (attempt([&] { id = toInteger16(double(batch.Ltray[i].Tag)); }))
            batch.ApplyRow(id, static_cast<int16_t>(i + 1), true);
        expect(batch.workBits.width() <= longestSide && batch.workBits.height() <= longestSide);
    }

    program.takeIn(picture);
    batch.MoveFunctionDown(0);
    program.takeIn(picture);
    batch.RemoveFunction(0);
    expect(batch.LSelectedFunctions.size() == (records.empty() ? 0 : records.size() - 1));
    return 0;
}
