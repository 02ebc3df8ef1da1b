#include "wizard/icons.h"

#include <memory>

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

#include "wizard/contrast.h"

namespace tessarine {

namespace {

// The two colours of a drawing that stand for the palette's.
constexpr char strokePlaceholder[] = "currentColor";
constexpr char accentPlaceholder[] = "#4457d0";

constexpr float disabledOpacity = 0.45F;

struct Inks {
    QColor stroke;
    QColor accent;
};

Inks inksFor(QIcon::Mode mode) {
    const QPalette palette = QGuiApplication::palette();
    const auto group = QGuiApplication::applicationState() == Qt::ApplicationInactive
                           ? QPalette::Inactive
                           : QPalette::Active;
    if (mode == QIcon::Disabled) {
        const QColor faint = palette.color(QPalette::Disabled, QPalette::WindowText);
        return {faint, faint};
    }
    if (mode == QIcon::Selected) {
        const QColor chosen = palette.color(group, QPalette::HighlightedText);
        return {chosen, chosen};
    }
    return {palette.color(group, QPalette::WindowText),
            readableOn(palette.color(group, QPalette::Window),
                       palette.color(QPalette::Active, QPalette::Highlight))};
}

/// Renders a drawing of the program's resources anew for each size, density and palette. The
/// palette is asked at the time of drawing: an icon follows a change with the next repaint.
class DrawingEngine : public QIconEngine {
  public:
    DrawingEngine(const QString& path, const QByteArray& svg)
        : path_(path),
          svg_(svg),
          size_(QSvgRenderer(svg).defaultSize()),
          recoloured_(svg.contains(strokePlaceholder)) {}

    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode,
               QIcon::State state) override {
        const qreal ratio = painter->device()->devicePixelRatio();
        QPixmap picture = pixmap((QSizeF(place.size()) * ratio).toSize(), mode, state);
        picture.setDevicePixelRatio(ratio);
        painter->drawPixmap(place, picture);
    }

    /// `size` is in device pixels.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        const Inks inks = recoloured_ ? inksFor(mode) : Inks{};
        const bool faint = !recoloured_ && mode == QIcon::Disabled;
        const QString key = QString("%1 %2x%3 %4 %5 %6")
                                .arg(path_)
                                .arg(size.width())
                                .arg(size.height())
                                .arg(inks.stroke.rgba(), 0, 16)
                                .arg(inks.accent.rgba(), 0, 16)
                                .arg(faint);
        QPixmap picture;
        if (QPixmapCache::find(key, &picture)) return picture;
        picture = drawn(size, inks, faint ? disabledOpacity : 1.0F);
        QPixmapCache::insert(key, picture);
        return picture;
    }

    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override {
        return size_.scaled(size, Qt::KeepAspectRatio);
    }

    QIconEngine* clone() const override { return new DrawingEngine(*this); }
    QString key() const override { return "TessarineDrawing"; }

  private:
    QPixmap drawn(const QSize& size, const Inks& inks, float opacity) const {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        if (size.isEmpty()) return picture;
        QByteArray svg = svg_;
        if (recoloured_) {
            svg.replace(strokePlaceholder, inks.stroke.name().toLatin1());
            svg.replace(accentPlaceholder, inks.accent.name().toLatin1());
        }
        QSvgRenderer renderer(svg);
        renderer.setAspectRatioMode(Qt::KeepAspectRatio);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter, QRectF(QPointF(), QSizeF(size)));
        // Afterwards and at once, for shapes that lie on each other would shine through.
        painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        painter.fillRect(picture.rect(), QColor::fromRgbF(0, 0, 0, opacity));
        return picture;
    }

    QString path_;
    QByteArray svg_;
    QSize size_;
    bool recoloured_;
};

QIcon drawing(const char* folder, std::string_view name) {
    const QString path =
        QString(":/%1/%2.svg").arg(folder, QString::fromUtf8(name.data(), qsizetype(name.size())));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QIcon(new DrawingEngine(path, file.readAll()));
}

}  // namespace

QIcon programIcon(std::string_view name) { return drawing("icons", name); }

QIcon programPicture(std::string_view name) { return drawing("pictures", name); }

}  // namespace tessarine
