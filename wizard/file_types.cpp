#include "wizard/file_types.h"

#include <map>

#include <QMimeDatabase>

#include "batch/texts.h"
#include "wizard/icons.h"

namespace tessarine {

namespace {

QMimeType mimeTypeOf(const std::string& extension) {
    // The name alone decides: no file has to be opened.
    return QMimeDatabase().mimeTypeForFile("file." + QString::fromStdString(extension),
                                           QMimeDatabase::MatchExtension);
}

QIcon themeIcon(const std::string& extension) {
    const QMimeType type = mimeTypeOf(extension);
    for (const QString& name : {type.iconName(), type.genericIconName()})
        if (QIcon::hasThemeIcon(name)) return QIcon::fromTheme(name);
    return programIcon("image-file");
}

}  // namespace

QIcon fileTypeIcon(const std::string& extension) {
    // A list asks for the same few icons over and over; another theme has others.
    static QString theme;
    static std::map<std::string, QIcon> icons;
    if (theme != QIcon::themeName()) {
        theme = QIcon::themeName();
        icons.clear();
    }
    const auto [place, isNew] = icons.try_emplace(extension);
    if (isNew) place->second = themeIcon(extension);
    return place->second;
}

std::string fileTypeName(const std::string& extension) {
    const QMimeType type = mimeTypeOf(extension);
    if (type.isDefault() || type.comment().isEmpty()) return upperCase(extension) + " File";
    return type.comment().toStdString();
}

}  // namespace tessarine
