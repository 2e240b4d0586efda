#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QPixmap>

#include <optional>

namespace korvel::ui {

// The skinned button of the main window: a gold face drawn in code, with one look per state
// (released, pointer over it, pressed). A look is a small integer code:
//   0 flat face, 1 flat face with a highlight rim, 2 thin sunken, 3 thin raised with a highlight rim,
//   4 thin raised, 5 thick raised and lit, 6 thick raised, 7 flat and lit, 8 thin sunken and lit,
//   9 thick sunken and lit, 10 thick sunken.
// The flat set is 0/4/2 and the raised set 4/5/10 (see setFlatLook()).
class GoldButton : public QAbstractButton {
    Q_OBJECT
    Q_PROPERTY(QString Caption READ text WRITE setText)
    Q_PROPERTY(bool Enabled READ isEnabled WRITE setEnabled)
    Q_PROPERTY(Qt::Alignment Alignment READ alignment WRITE setAlignment)
    Q_PROPERTY(QColor ForeColor READ foreColor WRITE setForeColor)
    Q_PROPERTY(QColor HoverColor READ hoverColor WRITE setHoverColor)
    Q_PROPERTY(QColor DownColor READ downColor WRITE setDownColor)
    Q_PROPERTY(QColor SkinDisabledText READ skinDisabledText WRITE setSkinDisabledText)
    Q_PROPERTY(QColor SkinHighlight READ skinHighlight WRITE setSkinHighlight)
    Q_PROPERTY(QColor PictureBackColor READ pictureBackColor WRITE setPictureBackColor)
    Q_PROPERTY(int OnUp READ onUp WRITE setOnUp)
    Q_PROPERTY(int OnHover READ onHover WRITE setOnHover)
    Q_PROPERTY(int OnDown READ onDown WRITE setOnDown)
    Q_PROPERTY(int Style READ style WRITE setStyle)
    Q_PROPERTY(QColor MaskColor READ maskColor WRITE setMaskColor)
    Q_PROPERTY(bool UseMaskColor READ useMaskColor WRITE setUseMaskColor)
    Q_PROPERTY(QPixmap SkinPicture READ skinPicture WRITE setSkinPicture)
    Q_PROPERTY(QPixmap Picture READ picture WRITE setPicture)
    Q_PROPERTY(QPixmap PictureHover READ pictureHover WRITE setPictureHover)
    Q_PROPERTY(QPixmap PictureDown READ pictureDown WRITE setPictureDown)
    Q_PROPERTY(QPixmap PictureDisabled READ pictureDisabled WRITE setPictureDisabled)
    Q_PROPERTY(QFont Font READ font WRITE setFont)

public:
    enum class State { Up, Hover, Down };
    // Style: 0 = the gold skin; 1 = the face drawn from SkinPicture when one is set.
    static constexpr int kStyleGold = 0;
    static constexpr int kStyleSkinPicture = 1;

    explicit GoldButton(const QString& caption = QString(), QWidget* parent = nullptr);

    Qt::Alignment alignment() const { return m_alignment; }
    void setAlignment(Qt::Alignment alignment);
    QColor foreColor() const { return m_foreColor; }
    void setForeColor(const QColor& color);
    QColor hoverColor() const { return m_hoverColor; }
    void setHoverColor(const QColor& color);
    QColor downColor() const { return m_downColor; }
    void setDownColor(const QColor& color);
    QColor skinDisabledText() const { return m_disabledText; }
    void setSkinDisabledText(const QColor& color);
    QColor skinHighlight() const { return m_highlight; }
    void setSkinHighlight(const QColor& color);
    QColor pictureBackColor() const { return m_pictureBack; }
    void setPictureBackColor(const QColor& color);
    int onUp() const { return m_onUp; }
    void setOnUp(int look);
    int onHover() const { return m_onHover; }
    void setOnHover(int look);
    int onDown() const { return m_onDown; }
    void setOnDown(int look);
    int style() const { return m_style; }
    void setStyle(int style);
    QColor maskColor() const { return m_maskColor; }
    void setMaskColor(const QColor& color);
    bool useMaskColor() const { return m_useMaskColor; }
    void setUseMaskColor(bool use);
    QPixmap skinPicture() const { return m_skinPicture; }
    void setSkinPicture(const QPixmap& picture);
    QPixmap picture() const { return m_picture; }
    void setPicture(const QPixmap& picture);
    QPixmap pictureHover() const { return m_pictureHover; }
    void setPictureHover(const QPixmap& picture);
    QPixmap pictureDown() const { return m_pictureDown; }
    void setPictureDown(const QPixmap& picture);
    QPixmap pictureDisabled() const { return m_pictureDisabled; }
    void setPictureDisabled(const QPixmap& picture);

    // The three looks for the "Flat" choice: flat (0, 4, 2) or raised (4, 5, 10); no choice (a
    // stored value that is neither) leaves the looks as they are. Returns whether it changed them.
    bool setFlatLook(std::optional<bool> flat);
    // The state the button is drawn in now, and its look code.
    State state() const;
    int currentLook() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QPixmap pictureFor(State state) const;
    QPixmap masked(const QPixmap& picture) const;

    Qt::Alignment m_alignment = Qt::AlignCenter;
    QColor m_foreColor{0x20, 0x14, 0x00};
    QColor m_hoverColor{0x60, 0x10, 0x00};
    QColor m_downColor{0x00, 0x00, 0x00};
    QColor m_disabledText{0x8c, 0x7a, 0x52};
    QColor m_highlight{0xff, 0xf4, 0xc0};
    QColor m_pictureBack{0xd9, 0xb0, 0x48};
    QColor m_maskColor{0xff, 0x00, 0xff};
    bool m_useMaskColor = false;
    int m_onUp = 4;
    int m_onHover = 5;
    int m_onDown = 10;
    int m_style = kStyleGold;
    bool m_hovered = false;
    QPixmap m_skinPicture, m_picture, m_pictureHover, m_pictureDown, m_pictureDisabled;
};

} // namespace korvel::ui
