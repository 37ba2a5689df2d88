// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/RestingSelection.h"

#include <QAbstractItemView>
#include <QStyleOptionViewItem>

namespace {

/// Of the selection's colour; the rest is the ground's.
constexpr double share = 0.3;

QColor mixed(const QColor &color, const QColor &ground)
{
    const auto mix = [](int part, int rest) { return qRound(part * share + rest * (1 - share)); };
    return {mix(color.red(), ground.red()), mix(color.green(), ground.green()),
            mix(color.blue(), ground.blue())};
}

/// The window's own, which an open menu leaves where it is.
bool hasKeyboard(const QAbstractItemView &view)
{
    const QWidget *focused = view.window()->focusWidget();
    return focused && (focused == &view || view.isAncestorOf(focused));
}

} // namespace

void RestingSelection::apply(QStyleOptionViewItem &option, const QAbstractItemView &view)
{
    if (hasKeyboard(view))
        return;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        const QColor ground = option.palette.color(group, QPalette::Base);
        const QColor selection = option.palette.color(group, QPalette::Highlight);
        option.palette.setColor(group, QPalette::Highlight, mixed(selection, ground));
        option.palette.setColor(group, QPalette::HighlightedText,
                                option.palette.color(group, QPalette::Text));
    }
}
