#include "imagefiles/format_table.h"
#include "input.h"
#include "scratch.h"
#include "small_batch.h"

using namespace tessarine;

namespace {

/// A program whose folder is a scratch folder, and in which every second folder is there.
class StartPlatform : public SilentPlatform {
  public:
    explicit StartPlatform(const Scratch& scratch) : scratch_(scratch) {}

    std::string programFolder() override { return scratch_.folder(); }
    bool folderExists(const std::string& path) override {
        return std::hash<std::string>{}(path) % 2 == 0;
    }
    void sizeWindow(int32_t w, int32_t h) override { width = w, height = h; }
    void maximizeWindow() override { maximized = true; }
    void setDialogFolder(const std::string& folder) override { dialogFolder = folder; }

    int32_t width = 0;
    int32_t height = 0;
    bool maximized = false;
    std::string dialogFolder;

  private:
    const Scratch& scratch_;
};

void checkControls(const cBatch& batch, const StartPlatform& platform) {
    const StartupRecord& record = batch.startupRecord;
    expect(batch.bs11 == record.splitterBs11 && batch.bs12 == record.splitterBs12);
    expect(batch.bs13 == record.splitterBs13 && batch.bs14 == record.splitterBs14);
    expect(batch.bs21 == record.splitterBs21);
    expect(batch.cboFormat.index >= -1 && batch.cboFormat.index < formatRowCount);
    expect(batch.chkOverwrite == 0 || batch.chkOverwrite == 1);
    expect(batch.chkShowDestination == 0 || batch.chkShowDestination == 1);
    expect(batch.txtName.size() <= FixedText::length);
    expect(batch.txtDestination.empty() ||
           batch.txtDestination == record.destinationFolder.rightTrimmed());
    expect(platform.dialogFolder == record.dialogFolder.rightTrimmed());
    expect(platform.maximized == (record.maximized != 0));
    // Half a pixel at most goes with the division.
    if (!platform.maximized)
        expect(std::abs(int64_t{platform.width} * 2 * twipsPerPixel -
                        int64_t{2} * record.windowWidth) <= twipsPerPixel);
}

}  // namespace

// Any bytes are a record, and are written back as they are, filled up with 0 bytes. A program that
// starts with them shows what they hold as far as a control can, and one that ends leaves a file
// with which the next start and end change nothing.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Scratch scratch;
    std::string bytes(reinterpret_cast<const char*>(data), size);
    const StartupRecord record = StartupRecord::fromBytes(bytes);
    scratch.write("tsStart.up", bytes);
    bytes.resize(StartupRecord::bytesOnDisk, '\0');
    expect(record.toBytes() == bytes);
    expect(record.lastFolder.rightTrimmed().size() <= FixedText::length);

    const auto startAndEnd = [](bool savesAtOnce) {
        StartPlatform platform(scratch);
        cBatch batch(platform);
        batch.Startup();
        checkControls(batch, platform);
        if (savesAtOnce)
            batch.SaveStartup();
        else
            batch.CloseWindow();
        return scratch.read("tsStart.up");
    };
    // What lies behind the record of a longer file stays.
    const std::string rest =
        size > bytes.size() ? std::string(data + bytes.size(), data + size) : std::string();
    expect(startAndEnd(true) == bytes + rest);
    const std::string once = startAndEnd(false);
    expect(once.size() == bytes.size() + rest.size());
    expect(startAndEnd(false) == once);
    return 0;
}
