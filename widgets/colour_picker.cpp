#include "widgets/colour_picker.h"

#include <algorithm>
#include <array>

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTimer>

#include "widgets/arithmetic/colour_picker_model.h"
#include "widgets/canvas.h"
#include "widgets/picker_controls.h"

namespace tessarine {

namespace {

using Model = ColourPickerModel;

// Places in the window, in pixels. What stands above and below rectangle and ticks adds up to 20
// in height.
constexpr int margin = 8;
constexpr int frame = 2;  // of the edge around a picture
constexpr int betweenPictures = 12;
constexpr int besideRectangle = 76;  // edges, bar, triangle and blanks, on both sides of it
constexpr int abovePictures = 8;
constexpr int belowPictures = 2;
constexpr int belowTicks = 6;
constexpr int betweenFrames = 6;
constexpr int tallestPaneMore = 64;  // by which the panes grow in a high window
constexpr int preferredWidth = 300;  // of the rectangle
constexpr int smallestWidth = 120;   // of the rectangle

struct AxisNames {
    Axis axis;
    const char* name;
    const char* caption;
    const char* unit;
};

constexpr std::array<AxisNames, 6> axes{{{Axis::hue, "Hue", "&Hue", "°"},
                                         {Axis::sat, "Sat", "&Saturation", "%"},
                                         {Axis::bri, "Bri", "&Brightness", "%"},
                                         {Axis::red, "Red", "&Red", ""},
                                         {Axis::green, "Green", "&Green", ""},
                                         {Axis::blue, "Blue", "B&lue", ""}}};

struct ReadOnlyNames {
    int row;
    const char* name;
    const char* caption;
    const char* accessibleName;
    const char* unit;
    std::string ColourTexts::*text;
};

/// Beside hue, saturation and brightness stands Lab, beside red, green and blue CMYK.
constexpr std::array<ReadOnlyNames, 8> readOnly{
    {{0, "txtLabLuminance", "L", "Lab luminance", "", &ColourTexts::labLuminance},
     {1, "txtLabA", "a", "Lab a", "", &ColourTexts::labA},
     {2, "txtLabB", "b", "Lab b", "", &ColourTexts::labB},
     {4, "txtCyan", "Cyan", "Cyan", "%", &ColourTexts::cyan},
     {5, "txtMagenta", "Magenta", "Magenta", "%", &ColourTexts::magenta},
     {6, "txtYellow", "Yellow", "Yellow", "%", &ColourTexts::yellow},
     {7, "txtBlack", "Black", "Black", "%", &ColourTexts::black},
     {7, "txtNewColor", "Hex", "Hexadecimal", "", &ColourTexts::newColor}}};
constexpr int gapRow = 3;
constexpr size_t hexField = 7;

QString plain(const char* caption) { return QString::fromUtf8(caption).remove('&'); }

Model::Place placeOf(QPoint point) { return {point.x(), point.y()}; }

}  // namespace

struct fGradient::Parts {
    Model model;
    cGradient canvas;
    bool canvasStands = false;  ///< the canvas shows what stands in the model

    PickArea* imgRect = nullptr;
    PickArea* imgBar = nullptr;
    QGroupBox* fraReference = nullptr;
    ColourPane* labNew = nullptr;
    ColourButton* labOld = nullptr;
    QGroupBox* fraNumeric = nullptr;
    std::array<QRadioButton*, 6> options{};
    std::array<ComponentSpin*, 6> spins{};
    std::array<ReadOnlyField*, readOnly.size()> texts{};
    QCheckBox* chkWebSafe = nullptr;
    QCheckBox* chkAccel = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
    QTimer* tmrKeyboard = nullptr;
};

fGradient::fGradient(QWidget* parent) : QDialog(parent), parts_(std::make_unique<Parts>()) {
    setObjectName("fGradient");
    setWindowTitle("Color Picker");
    setSizeGripEnabled(false);
    auto& p = *parts_;
    p.tmrKeyboard = new QTimer(this);
    p.tmrKeyboard->setObjectName("tmrKeyboard");
    p.tmrKeyboard->setSingleShot(true);
    p.tmrKeyboard->setInterval(Model::keyboardDelay);
    p.model.startTimer = [timer = p.tmrKeyboard] { timer->start(); };
    p.model.stopTimer = [timer = p.tmrKeyboard] { timer->stop(); };
    connect(p.tmrKeyboard, &QTimer::timeout, this, [this] {
        parts_->model.timerEvent();
        showModel();
    });
    addPictures();
    addReference();
    addComponents();
    addTicksAndButtons();
    orderTabs();

    const QSize smallest = smallestSize();
    setMinimumSize(smallest);
    QSize wanted = smallest;
    wanted.setWidth(std::max(wanted.width(),
                             preferredWidth + besideRectangle + p.fraNumeric->sizeHint().width()));
    resize(wanted.boundedTo(screen()->availableSize()).expandedTo(smallest));
    showModel();
}

fGradient::~fGradient() {
    // A window that goes takes the focus from its pictures.
    parts_->imgRect->disconnect(this);
    parts_->imgBar->disconnect(this);
}

bool fGradient::Init(int32_t colourIn, int32_t& colourOut) {
    Model& model = parts_->model;
    model.open(colourIn);
    showModel();
    exec();
    if (!model.accepted()) return false;
    colourOut = model.Color();
    return true;
}

int32_t fGradient::Color() const { return parts_->model.Color(); }

void fGradient::Color(int32_t colour) {
    parts_->model.Color(colour);
    showModel();
}

void fGradient::accept() {
    parts_->model.accept();
    showModel();
    QDialog::accept();
}

void fGradient::reject() {
    parts_->model.cancel();
    QDialog::reject();
}

// ---- Controls ----

void fGradient::addPictures() {
    auto& p = *parts_;
    const auto connectArea = [this](PickArea* area, Model::Picture picture) {
        using Handler = void (Model::*)(Model::Picture, Model::Place);
        const auto pass = [this, picture](Handler handler) {
            return [this, picture, handler](QPoint place) {
                (parts_->model.*handler)(picture, placeOf(place));
                showModel();
            };
        };
        connect(area, &PickArea::pressed, this, pass(&Model::press));
        connect(area, &PickArea::moved, this, pass(&Model::move));
        connect(area, &PickArea::released, this, pass(&Model::release));
        connect(area, &PickArea::stepped, this, [this, picture](QPoint by) {
            parts_->model.step(picture, placeOf(by));
            showModel();
        });
        connect(area, &PickArea::focusChanged, this, [this] { showModel(); });
    };
    p.imgRect = new PickArea("imgRect", this);
    p.imgBar = new PickArea("imgBar", this);
    connectArea(p.imgRect, Model::Picture::rectangle);
    connectArea(p.imgBar, Model::Picture::bar);
    connect(p.imgRect, &PickArea::doubleClicked, this, [this] { parts_->cmdOK->click(); });
}

void fGradient::addReference() {
    auto& p = *parts_;
    p.fraReference = new QGroupBox("Reference", this);
    p.fraReference->setObjectName("fraReference");
    p.labNew = new ColourPane("labNew", p.fraReference);
    p.labNew->setAccessibleName("New color");
    p.labOld = new ColourButton("labOld", p.fraReference);
    p.labOld->setAccessibleName("Old color");
    p.labOld->setToolTip("Brings the old color back");
    auto* newCaption = new QLabel("New", p.fraReference);
    auto* oldCaption = new QLabel("Ol&d", p.fraReference);
    oldCaption->setBuddy(p.labOld);
    auto* grid = new QGridLayout(p.fraReference);
    grid->setHorizontalSpacing(0);
    grid->setVerticalSpacing(2);
    grid->addWidget(newCaption, 0, 0);
    grid->addWidget(oldCaption, 0, 1);
    grid->addWidget(p.labNew, 1, 0);
    grid->addWidget(p.labOld, 1, 1);
    grid->setRowStretch(1, 1);
    connect(p.labOld, &ColourButton::clicked, this, [this] {
        parts_->model.restoreOld();
        showModel();
    });
}

void fGradient::addComponents() {
    auto& p = *parts_;
    p.fraNumeric = new QGroupBox("Components", this);
    p.fraNumeric->setObjectName("fraNumeric");
    auto* grid = new QGridLayout(p.fraNumeric);
    grid->setHorizontalSpacing(4);
    grid->setVerticalSpacing(4);
    grid->setRowMinimumHeight(gapRow, 4);
    grid->setColumnMinimumWidth(3, 6);
    const auto label = [&](const char* text) {
        return new QLabel(QString::fromUtf8(text), p.fraNumeric);
    };

    for (size_t i = 0; i < axes.size(); ++i) {
        const AxisNames& names = axes[i];
        const Axis axis = names.axis;
        const int row = static_cast<int>(i) + (i < gapRow ? 0 : 1);
        auto* option = new QRadioButton(names.caption, p.fraNumeric);
        option->setObjectName(QString("opt") + names.name);
        option->setAccessibleName(plain(names.caption) + " along the bar");
        option->setChecked(axis == p.model.axis());
        connect(option, &QRadioButton::toggled, this, [this, axis](bool on) {
            if (!on) return;
            parts_->model.choose(axis);
            showModel();
        });
        auto* spin =
            new ComponentSpin(names.name, plain(names.caption), Model::highest(axis), p.fraNumeric);
        connect(spin, &ComponentSpin::textChanged, this, [this, axis, spin](const QString& text) {
            const bool select = parts_->model.changeText(axis, text.toStdString());
            showModel();
            if (select) spin->field().selectAll();
        });
        connect(spin, &ComponentSpin::spun, this, [this, axis](int value) {
            parts_->model.spin(axis, value);
            showModel();
        });
        grid->addWidget(option, row, 0);
        grid->addWidget(spin, row, 1);
        grid->addWidget(label(names.unit), row, 2);
        p.options[i] = option;
        p.spins[i] = spin;
    }
    for (size_t i = 0; i < readOnly.size(); ++i) {
        const ReadOnlyNames& names = readOnly[i];
        auto* text =
            new ReadOnlyField(names.name, i == hexField ? "DDDDDD" : "-000.0", p.fraNumeric);
        text->setAccessibleName(names.accessibleName);
        const int column = i == hexField ? 0 : 4;
        grid->addWidget(label(names.caption), names.row, column);
        grid->addWidget(text, names.row, column + 1);
        grid->addWidget(label(names.unit), names.row, column + 2);
        p.texts[i] = text;
    }
}

void fGradient::addTicksAndButtons() {
    auto& p = *parts_;
    p.chkWebSafe = new QCheckBox("&Web colors only", this);
    p.chkWebSafe->setObjectName("chkWebSafe");
    p.chkAccel = new QCheckBox("&Accelerate display", this);
    p.chkAccel->setObjectName("chkAccel");
    p.cmdOK = new QPushButton("&OK", this);
    p.cmdOK->setObjectName("cmdOK");
    p.cmdOK->setDefault(true);
    p.cmdCancel = new QPushButton("&Cancel", this);
    p.cmdCancel->setObjectName("cmdCancel");
    for (QAbstractButton* button :
         {static_cast<QAbstractButton*>(p.chkWebSafe), static_cast<QAbstractButton*>(p.chkAccel),
          static_cast<QAbstractButton*>(p.cmdOK), static_cast<QAbstractButton*>(p.cmdCancel)})
        button->setAccessibleName(button->text().remove('&'));
    connect(p.chkWebSafe, &QCheckBox::toggled, this, [this](bool on) {
        parts_->model.setWebSafeOnly(on);
        showModel();
    });
    connect(p.chkAccel, &QCheckBox::toggled, this, [this](bool on) {
        parts_->model.setAccelerated(on);
        showModel();
    });
    connect(p.cmdOK, &QPushButton::clicked, this, &fGradient::accept);
    connect(p.cmdCancel, &QPushButton::clicked, this, &fGradient::reject);
}

void fGradient::orderTabs() {
    auto& p = *parts_;
    QWidget* last = p.imgRect;
    const auto follow = [&last](QWidget* next) {
        setTabOrder(last, next);
        last = next;
    };
    follow(p.imgBar);
    for (QRadioButton* option : p.options)
        follow(option);
    for (ComponentSpin* spin : p.spins)
        follow(spin);
    for (ReadOnlyField* text : p.texts)
        follow(text);
    follow(p.labOld);
    follow(p.chkWebSafe);
    follow(p.chkAccel);
    follow(p.cmdOK);
    follow(p.cmdCancel);
}

// ---- Places ----

QSize fGradient::smallestSize() const {
    const auto& p = *parts_;
    const int tickHeight =
        std::max(p.chkWebSafe->sizeHint().height(), p.cmdOK->sizeHint().height());
    const int ticks = p.chkWebSafe->sizeHint().width() + margin + p.chkAccel->sizeHint().width();
    const int buttons =
        2 * std::max(p.cmdOK->sizeHint().width(), p.cmdCancel->sizeHint().width()) + betweenFrames;
    return {std::max(smallestWidth + besideRectangle + p.fraNumeric->sizeHint().width(),
                     margin + ticks + margin + buttons + margin),
            abovePictures + p.fraReference->sizeHint().height() + betweenFrames +
                p.fraNumeric->sizeHint().height() + betweenFrames + tickHeight + belowTicks};
}

void fGradient::layOut() {
    auto& p = *parts_;
    const int numericWidth = p.fraNumeric->sizeHint().width();
    const int numericHeight = p.fraNumeric->sizeHint().height();
    const int tickHeight =
        std::max(p.chkWebSafe->sizeHint().height(), p.cmdOK->sizeHint().height());
    const Model::Size size = Model::rectangleSize({width(), height()}, numericWidth, tickHeight);
    p.model.resize(size);

    const int top = abovePictures + frame;
    p.imgRect->setGeometry(margin + frame, top, size.width, size.height);
    p.imgBar->setGeometry(margin + frame + size.width + frame + betweenPictures + frame, top,
                          barWidth, size.height);

    const int ticksTop = top + size.height + frame + belowPictures;
    p.chkWebSafe->setGeometry(margin, ticksTop, p.chkWebSafe->sizeHint().width(), tickHeight);
    p.chkAccel->setGeometry(p.chkWebSafe->geometry().right() + 1 + margin, ticksTop,
                            p.chkAccel->sizeHint().width(), tickHeight);

    const int left = width() - margin - numericWidth;
    const int right = width() - margin;
    // Where the ticks reach below the components, the buttons leave them that room.
    const int buttonsLeft = std::max(left, p.chkAccel->geometry().right() + 1 + margin);
    const int buttonWidth = (right - buttonsLeft - betweenFrames) / 2;
    p.cmdOK->setGeometry(right - 2 * buttonWidth - betweenFrames, ticksTop, buttonWidth,
                         tickHeight);
    p.cmdCancel->setGeometry(right - buttonWidth, ticksTop, buttonWidth, tickHeight);
    const int referenceHeight =
        std::min(ticksTop - 2 * betweenFrames - numericHeight - abovePictures,
                 p.fraReference->sizeHint().height() + tallestPaneMore);
    p.fraReference->setGeometry(left, abovePictures, numericWidth, referenceHeight);
    p.fraNumeric->setGeometry(left, abovePictures + referenceHeight + betweenFrames, numericWidth,
                              numericHeight);
    showModel();
}

void fGradient::resizeEvent(QResizeEvent*) { layOut(); }

bool fGradient::event(QEvent* event) {
    const bool handled = QDialog::event(event);
    switch (event->type()) {
        case QEvent::FontChange:
        case QEvent::StyleChange:
        case QEvent::LayoutRequest:
            setMinimumSize(smallestSize());
            layOut();
            break;
        case QEvent::PaletteChange:
            showModel();
            break;
        default:
            break;
    }
    return handled;
}

// ---- Showing ----

void fGradient::showModel() {
    auto& p = *parts_;
    for (size_t i = 0; i < axes.size(); ++i)
        p.spins[i]->show(QString::fromStdString(p.model.fieldText(axes[i].axis)),
                         p.model.spinValue(axes[i].axis));
    const ColourTexts texts = p.model.texts();
    for (size_t i = 0; i < readOnly.size(); ++i)
        p.texts[i]->show(QString::fromStdString(texts.*readOnly[i].text));
    p.labNew->setColour(cGradient::TranslateColor(p.model.Color()));
    p.labOld->setColour(cGradient::TranslateColor(p.model.oldColour()));
    p.chkAccel->setEnabled(p.model.acceleratedEnabled());
    nameAreas();
    p.canvasStands = false;
    update();
}

void fGradient::nameAreas() {
    auto& p = *parts_;
    const auto captionOf = [](Axis axis) { return plain(axes[static_cast<size_t>(axis)].caption); };
    const auto valueOf = [&](Axis axis) {
        return captionOf(axis) + ' ' + QString::fromStdString(p.model.fieldText(axis));
    };
    const Axis across = p.model.acrossAxis();
    const Axis up = p.model.upAxis();
    nameForReaders(*p.imgBar, captionOf(p.model.axis()));
    describeForReaders(*p.imgBar, valueOf(p.model.axis()));
    nameForReaders(*p.imgRect, captionOf(across) + " and " + captionOf(up).toLower());
    describeForReaders(*p.imgRect, valueOf(across) + ", " + valueOf(up).toLower());
}

void fGradient::paintEvent(QPaintEvent*) {
    auto& p = *parts_;
    cGradient& canvas = p.canvas;
    const bool fits = canvas.IsCreated() && canvas.Width() == p.fraNumeric->x() &&
                      canvas.Height() == p.chkWebSafe->y() &&
                      canvas.hdc()->devicePixelRatio() == devicePixelRatioF();
    if (!fits && !canvas.Init(p.fraNumeric->x(), p.chkWebSafe->y(), this)) return;
    if (!fits || !p.canvasStands) paintCanvas();
    p.canvasStands = true;
    canvas.BitBlt();
}

void fGradient::paintCanvas() {
    auto& p = *parts_;
    cGradient& canvas = p.canvas;
    const auto [width, height] = p.model.size();
    canvas.Cls(-1, palette().brush(QPalette::Window));
    for (const PickArea* area : {p.imgRect, p.imgBar}) {
        const QRect edge = area->geometry().adjusted(-frame, -frame, frame, frame);
        const int right = edge.right() + 1;
        const int bottom = edge.bottom() + 1;
        canvas.DrawEdge(edge.left(), edge.top(), right, bottom, cGradient::Edge::sunken, palette());
        if (!area->hasFocus()) continue;
        const QBrush highlight = palette().brush(QPalette::Highlight);
        canvas.FrameRect(edge.left(), edge.top(), right, bottom, -1, highlight);
        canvas.FrameRect(edge.left() + 1, edge.top() + 1, right - 1, bottom - 1, -1, highlight);
    }
    const QPoint rect = p.imgRect->pos();
    const Model::Rectangle& rectangle = p.model.rectangle();
    canvas.SetDIBits(rect.x(), rect.y(), width, height, rectangle.pixels.bytes);
    for (const GradientStrip& strip : rectangle.strips)
        canvas.GradientFill(rect.x() + strip.left, rect.y() + strip.top, rect.x() + strip.right,
                            rect.y() + strip.bottom, strip.first, strip.last, strip.vertical);
    canvas.SetDIBits(p.imgBar->x(), p.imgBar->y(), barWidth, height, p.model.bar().bytes);
    paintMarkers();
}

void fGradient::paintMarkers() {
    auto& p = *parts_;
    cGradient& canvas = p.canvas;
    const QRect rect = p.imgRect->geometry();
    const Model::Place centre = p.model.rectangleMarker();
    const int32_t m = p.model.contrastColour();
    canvas.SetClipRect(rect.left(), rect.top(), rect.right() + 1, rect.bottom() + 1);
    for (const int radius : {3, 4, 5}) {
        const int x = rect.left() + centre.x;
        const int y = rect.top() + centre.y;
        canvas.DrawEllipse(x - radius, y - radius, x + radius + 1, y + radius + 1,
                           radius == 4 ? m : m ^ 0xFFFFFF);
    }
    canvas.SetClipRect(0, 0, -1, -1);

    const QRect bar = p.imgBar->geometry();
    const QPointF tip(bar.right() + 1 + frame + 2, bar.top() + p.model.barMarker() + 0.5);
    QPainter painter(canvas.hdc());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().brush(QPalette::WindowText));
    painter.drawPolygon(QPolygonF({tip, tip + QPointF(6, -3.5), tip + QPointF(6, 3.5)}));
}

}  // namespace tessarine
