#include "wizard/icons.h"

#include <QString>

namespace tessarine {

namespace {

QIcon drawing(std::string_view folder, std::string_view name) {
    return QIcon(":/" + QString::fromUtf8(folder.data(), qsizetype(folder.size())) + "/" +
                 QString::fromUtf8(name.data(), qsizetype(name.size())) + ".svg");
}

}  // namespace

QIcon programIcon(std::string_view name) { return drawing("icons", name); }

QIcon programPicture(std::string_view name) { return drawing("pictures", name); }

}  // namespace tessarine
