#include "wizard/appearance.h"

#include <QApplication>
#include <QStyle>
#include <QToolTip>

#include "wizard/colour_preference.h"
#include "wizard/program_style.h"

namespace tessarine {

namespace {

constexpr char toolkitStyle[] = "fusion";
constexpr int patienceAtStart = 250;  // milliseconds

/// The colours of a palette, by what they are for.
struct Colours {
    QRgb window, text, base, alternateBase, button, placeholder, faint;
    QRgb highlight, highlightedText, faintHighlight;
    QRgb link, visitedLink, tip, tipText;
    QRgb light, midlight, mid, dark, shadow;
};

constexpr Colours day{
    .window = 0xfff2f3f7,
    .text = 0xff1f2330,
    .base = 0xffffffff,
    .alternateBase = 0xfff7f8fb,
    .button = 0xfff8f9fc,
    .placeholder = 0xff676c7d,
    .faint = 0xff9297a6,
    .highlight = 0xff4457d0,
    .highlightedText = 0xffffffff,
    .faintHighlight = 0xffc3c8dc,
    .link = 0xff3445b8,
    .visitedLink = 0xff6d3fa6,
    .tip = 0xff2b2f45,
    .tipText = 0xfff4f5fb,
    .light = 0xffffffff,
    .midlight = 0xffe8eaf0,
    .mid = 0xffc6cad6,
    .dark = 0xff9ea3b3,
    .shadow = 0xff5d6273,
};

constexpr Colours night{
    .window = 0xff23262f,
    .text = 0xffe6e8ef,
    .base = 0xff1a1c23,
    .alternateBase = 0xff1f2129,
    .button = 0xff292c36,
    .placeholder = 0xff9197a8,
    .faint = 0xff7f8597,
    .highlight = 0xff5769e4,
    .highlightedText = 0xffffffff,
    .faintHighlight = 0xff3a3f55,
    .link = 0xff9dabff,
    .visitedLink = 0xffc9a2f2,
    .tip = 0xff3a3f52,
    .tipText = 0xfff1f2f8,
    .light = 0xff3b404e,
    .midlight = 0xff343844,
    .mid = 0xff1d1f27,
    .dark = 0xff16181e,
    .shadow = 0xff0b0c10,
};

/// Whether the colours are not those that the style comes with.
bool desktopBringsColours() {
    const QPalette desktop = QApplication::palette();
    const QPalette plain = QApplication::style()->standardPalette();
    for (const QPalette::ColorRole role : {QPalette::Window, QPalette::WindowText, QPalette::Base,
                                           QPalette::Text, QPalette::Button, QPalette::Highlight})
        if (desktop.color(QPalette::Active, role) != plain.color(QPalette::Active, role))
            return true;
    return false;
}

void showScheme(ColourScheme scheme) {
    const QPalette palette = programPalette(scheme);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

void stopFollowing(const QApplication& application) {
    for (auto* preference : application.findChildren<ColourPreference*>())
        delete preference;
}

}  // namespace

QPalette programPalette(ColourScheme scheme) {
    const Colours& c = scheme == ColourScheme::dark ? night : day;
    QPalette palette;
    palette.setColor(QPalette::Window, c.window);
    palette.setColor(QPalette::WindowText, c.text);
    palette.setColor(QPalette::Base, c.base);
    palette.setColor(QPalette::AlternateBase, c.alternateBase);
    palette.setColor(QPalette::Text, c.text);
    palette.setColor(QPalette::Button, c.button);
    palette.setColor(QPalette::ButtonText, c.text);
    palette.setColor(QPalette::BrightText, c.highlightedText);
    palette.setColor(QPalette::PlaceholderText, c.placeholder);
    palette.setColor(QPalette::Highlight, c.highlight);
    palette.setColor(QPalette::HighlightedText, c.highlightedText);
    palette.setColor(QPalette::Link, c.link);
    palette.setColor(QPalette::LinkVisited, c.visitedLink);
    palette.setColor(QPalette::ToolTipBase, c.tip);
    palette.setColor(QPalette::ToolTipText, c.tipText);
    palette.setColor(QPalette::Light, c.light);
    palette.setColor(QPalette::Midlight, c.midlight);
    palette.setColor(QPalette::Mid, c.mid);
    palette.setColor(QPalette::Dark, c.dark);
    palette.setColor(QPalette::Shadow, c.shadow);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText,
          QPalette::PlaceholderText, QPalette::Link, QPalette::LinkVisited})
        palette.setColor(QPalette::Disabled, role, c.faint);
    palette.setColor(QPalette::Disabled, QPalette::Base, c.window);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, c.faintHighlight);
    return palette;
}

void applyAppearance(QApplication& application, const QDBusConnection& bus) {
    if (QApplication::style()->name() != toolkitStyle) return;
    const bool hasColours = desktopBringsColours();
    QApplication::setStyle(new ProgramStyle);
    if (hasColours) return;
    auto* preference = new ColourPreference(bus, showScheme, &application);
    preference->wait(patienceAtStart);
    showScheme(preference->scheme());
}

void useColourScheme(QApplication& application, ColourScheme scheme) {
    stopFollowing(application);
    QApplication::setStyle(new ProgramStyle);
    showScheme(scheme);
}

}  // namespace tessarine
