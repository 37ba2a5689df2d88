// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/MenuButton.h"

#include <QStyle>
#include <QStyleOptionButton>

QSize MenuButton::sizeHint() const
{
    const QSize size = QPushButton::sizeHint();
    QStyleOptionButton option;
    initStyleOption(&option);
    // Half of the rest comes to stand on either side of the text.
    const int text = fontMetrics().size(Qt::TextShowMnemonic, option.text).width();
    const int arrow = style()->pixelMetric(QStyle::PM_MenuButtonIndicator, &option, this);
    const int air = fontMetrics().averageCharWidth();
    return size.expandedTo({text + arrow + 4 * air, 0});
}
