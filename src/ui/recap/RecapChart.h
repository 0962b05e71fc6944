#pragma once

#include "ui/items/PaintedItem.h"
#include "ui/recap/RecapCard.h"

#include <QRectF>

namespace kestrant {

struct RecapChartLook;

/// The chart of a card of the recap: see paintRecapChart().
class RecapChart : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kestrant::RecapCard card READ card WRITE setCard NOTIFY changed)
    Q_PROPERTY(bool compact MEMBER compact_ NOTIFY changed)
    Q_PROPERTY(bool contrast MEMBER contrast_ NOTIFY changed)
    Q_PROPERTY(double progress MEMBER progress_ NOTIFY changed)
    Q_PROPERTY(double textScale MEMBER textScale_ NOTIFY changed)
    /// The day that is pointed at, counted from the first; -1 for none.
    Q_PROPERTY(int current MEMBER current_ NOTIFY changed)

  public:
    explicit RecapChart(QQuickItem* parent = nullptr);

    [[nodiscard]] const RecapCard& card() const { return card_; }
    void setCard(const RecapCard& card);
    /// The day at a place; -1 for none.
    Q_INVOKABLE [[nodiscard]] int dayAt(double x, double y) const;
    Q_INVOKABLE [[nodiscard]] QRectF frameOf(int day) const;

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    RecapCard card_;
    bool compact_ = false;
    bool contrast_ = false;
    double progress_ = 1.0;
    double textScale_ = 1.0;
    int current_ = -1;
};

/// A card as it is passed on as a picture, in the item's size.
class RecapPicture : public kestrant::PaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(kestrant::RecapCard card READ card WRITE setCard NOTIFY changed)

  public:
    explicit RecapPicture(QQuickItem* parent = nullptr);

    [[nodiscard]] const RecapCard& card() const { return card_; }
    void setCard(const RecapCard& card);

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void changed();

  private:
    RecapCard card_;
};

}  // namespace kestrant
