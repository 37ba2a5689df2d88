// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Controls/QNBShortcutWidgets.h"

#include <QAction>
#include <QPlainTextEdit>

namespace QNBShortcutWidgets {

QList<QWidget *> withoutText(const QWidget &page)
{
    QList<QWidget *> widgets = page.findChildren<QWidget *>();
    widgets.removeIf([](const QWidget *widget) {
        return !(widget->focusPolicy() & Qt::TabFocus) || qobject_cast<const QPlainTextEdit *>(widget);
    });
    return widgets;
}

void set(QAction &action, const QList<QWidget *> &widgets)
{
    action.setShortcutContext(Qt::WidgetShortcut);
    for (QWidget *widget : widgets)
        widget->addAction(&action);
}

} // namespace QNBShortcutWidgets
