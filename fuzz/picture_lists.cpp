#include "input.h"
#include "scratch.h"
#include "small_batch.h"

using namespace tessarine;

namespace {

/// Knows every second path, and saves lists to one place.
class BasketPlatform : public SilentPlatform {
  public:
    explicit BasketPlatform(std::string savePath) : savePath_(std::move(savePath)) {}

    bool fileExists(const std::string& path) override {
        return std::hash<std::string>{}(path) % 2 == 0;
    }
    std::optional<std::string> saveDialog(const std::string&) override { return savePath_; }
    void messageBox(const std::string& text, Icon, const std::string&) override { box = text; }

    std::string box;

  private:
    std::string savePath_;
};

}  // namespace

// Whatever a record holds comes out as a path whose parts can be told. Of a list, the basket takes
// the paths that lead somewhere, tells the number of the others, and gives the same list back.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Scratch scratch;
    const std::string_view bytes{reinterpret_cast<const char*>(data), size};
    const std::vector<std::string> paths = parsePictureList(bytes);
    for (const std::string& path : paths) {
        expect(path.size() <= pictureRecordBytes);
        expect(path == trimmed(path));
        const std::string file = fileNameOf(path);
        expect(extensionOf(path).size() <= file.size());
        expect(folderOf(path).size() + file.size() <= path.size());
    }

    BasketPlatform platform(scratch.path("saved.qpkl"));
    std::vector<BasketItem> basket;
    OpenPictureList(platform, scratch.write("list.qpkl", bytes), basket);
    std::vector<std::string> known;
    for (const std::string& path : paths)
        if (platform.fileExists(path)) known.push_back(path);
    expect(basket.size() == known.size());
    const size_t missing = paths.size() - known.size();
    expect(platform.box.starts_with(std::to_string(missing) + ' ') == (missing > 0));
    for (size_t i = 0; i < basket.size(); ++i) {
        expect(basket[i].Tag == known[i]);
        expect(basket[i].smallIcon == lowerCase(extensionOf(known[i])));
        expect(basket[i].column1 == folderOf(known[i]));
        expect(fileNameOf(known[i]).starts_with(basket[i].text));
    }
    if (basket.empty()) return 0;

    scratch.remove("saved.qpkl");
    cBatch batch(platform);
    batch.lvSelected = basket;
    batch.SaveList();
    expect(readPictureList(scratch.path("saved.qpkl")) == known);
    batch.OpenPictureList(scratch.path("saved.qpkl"));
    expect(batch.lvSelected.size() == known.size());
    batch.RemoveSelected({0, static_cast<int32_t>(size % 7)});
    expect(batch.lvSelected.size() < known.size());
    return 0;
}
