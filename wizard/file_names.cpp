#include "wizard/file_names.h"

#include <algorithm>

#include <QFile>
#include <QMimeData>
#include <QSysInfo>
#include <QTextDocument>

namespace tessarine {

namespace {

/// Whether a character breaks the line, or turns the letters behind it around.
bool upsetsLine(QChar c) {
    return c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
           c == QChar::ParagraphSeparator || c == QChar(0x202D) || c == QChar(0x202E);
}

bool isThisMachine(const QString& host) {
    return host.isEmpty() || host == "localhost" ||
           host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
}

}  // namespace

QString shownName(const std::string& bytes) {
    QString name = QFile::decodeName(bytes.c_str());
    std::replace_if(name.begin(), name.end(), upsetsLine, QChar(QChar::ReplacementCharacter));
    return name;
}

QString plainToolTip(const QString& text) {
    return Qt::mightBeRichText(text) ? "<span>" + text.toHtmlEscaped() + "</span>" : text;
}

std::string pathOf(const QUrl& url) {
    if (!url.isLocalFile() || !isThisMachine(url.host())) return {};
    // The decoded text would have lost the bytes that are no text.
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

QUrl urlOf(const std::string& path) {
    return QUrl::fromEncoded("file://" + QByteArray::fromStdString(path).toPercentEncoding("/"));
}

std::vector<std::string> localPaths(const QMimeData& data) {
    std::vector<std::string> paths;
    for (const QUrl& url : data.urls())
        if (std::string path = pathOf(url); !path.empty()) paths.push_back(std::move(path));
    return paths;
}

}  // namespace tessarine
