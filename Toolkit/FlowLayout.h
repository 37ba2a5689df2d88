// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLayout>
#include <memory>
#include <vector>

/// A row of widgets that goes on in another row where there is no room for all of them side by side.
class FlowLayout final : public QLayout
{
public:
    using QLayout::QLayout;

    void addItem(QLayoutItem *item) override;
    int count() const override { return static_cast<int>(items_.size()); }
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;

    Qt::Orientations expandingDirections() const override { return {}; }
    /// All in one row.
    QSize sizeHint() const override;
    /// The largest one alone.
    QSize minimumSize() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    void setGeometry(const QRect &rect) override;

private:
    struct Place
    {
        QLayoutItem *item;
        QRect rect;
    };
    int gap() const;
    /// Where the items come to stand, row by row from the left, in \a rect.
    std::vector<Place> placesIn(const QRect &rect) const;

    std::vector<std::unique_ptr<QLayoutItem>> items_;
};
