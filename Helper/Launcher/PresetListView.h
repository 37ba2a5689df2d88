// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QListView>

/// The presets that match. A label that does not fit is whole in its tool tip, and a list without rows says
/// why.
class PresetListView : public QListView
{
public:
    PresetListView();

    /// What stands in the middle of the list without rows.
    void setEmptyText(const QString &text);
    /// Whether \a event, a key in another widget, goes to a row of this list: then it has done so.
    bool takeKey(QKeyEvent &event);

    QSize sizeHint() const override;

protected:
    bool viewportEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString emptyText_;
};
