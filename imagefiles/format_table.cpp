#include "imagefiles/format_table.h"

namespace tessarine {

const std::array<FormatRow, formatRowCount>& formatTable() {
    using enum SaveRoute;
    static constexpr std::array<FormatRow, formatRowCount> rows = {{
        {"GIF-64 Colors", "gif", encoder, 6, "gif64"},
        {"GIF-128 Colors", "gif", encoder, 7, "gif128"},
        {"GIF-256 Colors", "gif", encoder, 8, "gif256"},
        {"JPEG - Bad Quality", "jpg", jpeg, 0x0800, "jpg-bad"},
        {"JPEG - Average Quality", "jpg", jpeg, 0x0400, "jpg-average"},
        {"JPEG - Normal Quality", "jpg", jpeg, 0x0200, "jpg-normal"},
        {"JPEG - Good Quality", "jpg", jpeg, 0x0100, "jpg-good"},
        {"JPEG - Superb Quality", "jpg", jpeg, 0x0080, "jpg-superb"},
        {"BMP - Windows Bitmap ", "bmp", devil, 0, "bmp"},
        {"PNG - Portable Network Graphics", "png", devil, 0, "png"},
        {"TGA - Targa Files", "tga", devil, 0, "tga"},
        {"TIF - Tag Image File Format", "tif", devil, 0, "tif"},
        {"PPM - Portable Pixelmap", "ppm", devil, 0, "ppm"},
        {"PBM - Portable Bitmap", "pbm", devil, 0, "pbm"},
        {"PGM - Portable Greymap", "pgm", devil, 0, "pgm"},
        {"PCX - ZSoft Paintbrush", "pcx", devil, 0, "pcx"},
        {"PSD - Photoshop", "psd", devil, 0, "psd"},
        {"SGI - Silicon Graphics", "sgi", devil, 0, "sgi"},
    }};
    return rows;
}

std::optional<SaveRoute> routeOf(std::string_view extension) {
    for (const FormatRow& row : formatTable())
        if (row.extension == extension) return row.route;
    return std::nullopt;
}

}  // namespace tessarine
