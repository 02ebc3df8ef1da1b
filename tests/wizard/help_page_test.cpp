#include <map>
#include <set>

#include <QFile>
#include <QStringList>
#include <QXmlStreamReader>
#include <gmock/gmock.h>

#include "batch/functions.h"
#include "imagefiles/format_table.h"

namespace tessarine::tests {
namespace {

/// The help page, read as strictly as XML is.
struct HelpPage {
    QString text;  ///< without what is between tags
    std::set<QString> ids;
    QStringList links;
    std::map<QString, QString> pictures;  ///< address to alternative text
    QStringList loaded;                   ///< addresses of style sheets and scripts
    QString error;

    HelpPage() {
        QFile file(TESSARINE_SOURCE_DIR "/assets/Help/default.htm");
        if (!file.open(QIODevice::ReadOnly)) {
            error = "cannot be opened";
            return;
        }
        QXmlStreamReader reader(&file);
        while (!reader.atEnd()) {
            const auto token = reader.readNext();
            if (token == QXmlStreamReader::Characters) text += reader.text();
            if (token == QXmlStreamReader::StartElement) take(reader);
        }
        if (reader.hasError()) error = reader.errorString();
    }

  private:
    void take(const QXmlStreamReader& reader) {
        const QXmlStreamAttributes attributes = reader.attributes();
        const auto value = [&](const char* name) { return attributes.value(name).toString(); };
        if (attributes.hasAttribute("id")) ids.insert(value("id"));
        if (reader.name() == QLatin1String("a")) links << value("href");
        if (reader.name() == QLatin1String("img")) pictures[value("src")] = value("alt");
        if (reader.name() == QLatin1String("link")) loaded << value("href");
        if (reader.name() == QLatin1String("script")) loaded << value("src");
        if (reader.name() == QLatin1String("br")) text += ' ';
    }
};

TEST(HelpPage, IsWellFormedAndLoadsNothingButItsPictures) {
    const HelpPage page;
    EXPECT_EQ(page.error.toStdString(), "");
    EXPECT_TRUE(page.loaded.isEmpty());
}

TEST(HelpPage, LinksLeadToPlacesOnThePage) {
    const HelpPage page;
    EXPECT_GT(page.links.size(), 10);
    for (const QString& link : page.links) {
        ASSERT_TRUE(link.startsWith('#')) << link.toStdString();
        EXPECT_TRUE(page.ids.contains(link.mid(1))) << link.toStdString();
    }
}

TEST(HelpPage, ShowsEachStepAndSaysInWordsWhatThePicturesShow) {
    const HelpPage page;
    std::set<QString> addresses;
    for (const auto& [address, words] : page.pictures) {
        addresses.insert(address);
        EXPECT_GT(words.size(), 20) << address.toStdString();
    }
    EXPECT_EQ(addresses,
              (std::set<QString>{"step-1.png", "step-2.png", "step-3.png", "step-4.png"}));
}

TEST(HelpPage, NamesEveryFormatThatCanBeWritten) {
    const HelpPage page;
    for (const FormatRow& row : formatTable()) {
        const QString text =
            QString::fromUtf8(row.text.data(), qsizetype(row.text.size())).trimmed();
        EXPECT_TRUE(page.text.contains(text)) << text.toStdString();
    }
}

TEST(HelpPage, CountsTheFunctionsAndNamesThoseThatTakeAPoint) {
    const HelpPage page;
    int functions = 0;
    for (const TreeNode& node : catalogueTree())
        functions += node.functionId >= 0;
    EXPECT_TRUE(page.text.contains(QString("%1 functions").arg(functions)));
    for (const FunctionDef& function : functionTable()) {
        if (!function.picksPoint) continue;
        const QString name =
            QString::fromUtf8(function.name.data(), qsizetype(function.name.size()));
        EXPECT_TRUE(page.text.contains(name)) << name.toStdString();
    }
}

}  // namespace
}  // namespace tessarine::tests
