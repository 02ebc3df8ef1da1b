#pragma once

#include <cstdint>
#include <memory>

#include <QDialog>

namespace tessarine {

/// "Color Picker": the modal dialog in which a person picks a colour.
class fGradient : public QDialog {
    Q_OBJECT

  public:
    explicit fGradient(QWidget* parent = nullptr);
    ~fGradient() override;

    /// Shows the dialog until it is closed. Colours are 0x00BBGGRR.
    /// \param colourIn   -1 counts as 0
    /// \param colourOut  the colour picked; left alone where the result is false
    /// \return whether cmdOK was pressed
    bool Init(int32_t colourIn, int32_t& colourOut);

    /// The current colour, 0x00BBGGRR; -1 before the first.
    int32_t Color() const;
    /// Sets the colour and shows it everywhere.
    void Color(int32_t colour);

    /// Hides the window; Init gives what was picked.
    void accept() override;
    void reject() override;

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    struct Parts;

    void addPictures();
    void addReference();
    void addComponents();
    void addTicksAndButtons();
    void orderTabs();
    /// The client size from which nothing is cut off.
    QSize smallestSize() const;
    void layOut();
    /// Shows what stands in the model.
    void showModel();
    /// Tells those who do not see the pictures what runs along them and where it stands.
    void nameAreas();
    void paintCanvas();
    void paintMarkers();

    std::unique_ptr<Parts> parts_;
};

}  // namespace tessarine
