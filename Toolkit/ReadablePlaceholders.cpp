// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/ReadablePlaceholders.h"

#include <QEvent>
#include <QWidget>
#include <cstdlib>

namespace {

constexpr int leastDifference = 48;
/// Of the usual text, which the placeholder stands back behind.
constexpr double share = 0.55;

bool canBeRead(const QPalette &palette)
{
    const QColor text = palette.color(QPalette::PlaceholderText);
    const int ground = palette.color(QPalette::Base).lightness();
    return std::abs(text.lightness() - ground) * text.alphaF() >= leastDifference;
}

} // namespace

ReadablePlaceholders::ReadablePlaceholders(QWidget &root)
    : QObject(&root)
    , root_(root)
{
    root.installEventFilter(this);
    update();
}

bool ReadablePlaceholders::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        update();
    return QObject::eventFilter(watched, event);
}

void ReadablePlaceholders::update()
{
    const QPalette shown = root_.palette();
    if (canBeRead(shown))
        return;
    QColor color = shown.color(QPalette::Text);
    color.setAlphaF(share);
    QPalette changed;
    changed.setColor(QPalette::PlaceholderText, color);
    root_.setPalette(changed);
}
