// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

/// What stands in an empty field or view can be read, whatever the palette says of it: a desktop's dark
/// colours may leave that one out, and the library then takes what fits light ones.
class ReadablePlaceholders : public QObject
{
public:
    /// For \a root, which owns this, and all that is in it, now and when the palette changes.
    explicit ReadablePlaceholders(QWidget &root);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void update();

    QWidget &root_;
};
