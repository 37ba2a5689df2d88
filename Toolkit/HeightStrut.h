// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QSpacerItem>
#include <QWidget>

/// Makes the row that it is put into as high as a widget in another column wants to be, so that the rows of
/// both stand side by side.
class HeightStrut final : public QSpacerItem
{
public:
    /// \a model has to outlive it.
    explicit HeightStrut(const QWidget &model)
        : QSpacerItem(0, 0, QSizePolicy::Fixed, QSizePolicy::Fixed)
        , model_(model)
    {
    }

    QSize sizeHint() const override { return {0, model_.sizeHint().height()}; }
    QSize minimumSize() const override { return sizeHint(); }

private:
    const QWidget &model_;
};
