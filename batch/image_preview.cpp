#include <algorithm>

#include "batch/batch.h"
#include "batch/scaled_picture.h"
#include "batch/texts.h"
#include "pixels/numbers.h"

// The picture of the file last clicked, and what is told about it.

namespace tessarine {

namespace {

/// What stays free around the picture, both sides together, in pixels.
constexpr int32_t previewRoom = 10;

}  // namespace

void cBatch::ShowImageDetails(const std::string& path) {
    const std::string extension = lowerCase(extensionOf(path));
    tPreview.clearPicture();
    hidePreview();
    if (isPlatformExtension(extension)) {
        attempt([&] {
            tPreview.setPicture(LoadPicture(path, extension, files_).bitmap);
            attempt([&] { format.loadedWidth = toInteger16(double(tPreview.width())); });
            attempt([&] { format.loadedHeight = toInteger16(double(tPreview.height())); });
            // Fixed figures; the file is not asked.
            format.loadedDepth = extension == "gif" ? 8 : 16;
        });
    } else if (const std::optional<Bitmap> bitmap =
                   LoadImageFile(format, path, extension, files_)) {
        // The bitmap's own size: the figures of the last load hold 16 bits only.
        attempt([&] {
            tPreview.setSize(bitmap->width(), bitmap->height());
            format.FreeImage_RenderBitmap(bitmap, &tPreview, 0, 0, -1, -1, false);
            tPreview.keepDrawing();
        });
    }
    const std::string width = std::to_string(format.loadedWidth);
    const std::string height = std::to_string(format.loadedHeight);
    showStatus(4, " " + width + " x " + height, extension);
    FitPreview(PreviewWidth, PreviewHeight);
    const auto tell = [this](std::string& label, std::string text, std::string_view control) {
        label = std::move(text);
        platform_.changed(control);
    };
    tell(LFileName, fileNameOf(path), "LFileName");
    tell(LType, upperCase(extension), "LType");
    tell(LResolution, width + " x " + height, "LResolution");
    tell(LLocation, folderOf(path), "LLocation");
}

void cBatch::FitPreview(int32_t previewWidth, int32_t previewHeight) {
    PreviewWidth = previewWidth;
    PreviewHeight = previewHeight;
    const bool fitted = attempt([&] {
        if (!tPreview.picture().isValid()) throw StatementFailed("there is no picture to show");
        PreviewPicture fit;
        const int32_t width = previewWidth - previewRoom;
        const int32_t height = previewHeight - previewRoom;
        FitInside(tPreview.width(), tPreview.height(), width, height, fit.width, fit.height);
        if (width > 0 && height > 0) {
            // A very thin picture is seen as a line, not taken for one that cannot be read.
            fit.width = std::max(fit.width, 1);
            fit.height = std::max(fit.height, 1);
        }
        // A dense screen has several pixels for one of ours, but no more than the picture has.
        const auto dense = [this](int32_t side, int32_t most) {
            return std::min(roundToInteger(side * previewDensity), most);
        };
        fit.picture = scaledDown(tPreview.picture(), dense(fit.width, tPreview.width()),
                                 dense(fit.height, tPreview.height()));
        fit.left = (previewWidth - fit.width) / 2;
        fit.top = (previewHeight - fit.height) / 2;
        fit.visible = true;
        PPreview = std::move(fit);
        platform_.changed("PPreview");
    });
    if (!fitted) hidePreview();
}

void cBatch::hidePreview() {
    PPreview = {};
    platform_.changed("PPreview");
}

void cBatch::showStatus(int32_t panel, const std::string& text, const std::string& icon) {
    SB.at(static_cast<size_t>(panel - 1)) = {text, icon};
    platform_.changed("SB(" + std::to_string(panel) + ")");
}

}  // namespace tessarine
