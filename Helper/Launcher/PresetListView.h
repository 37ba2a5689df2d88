// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QListView>

/// A list of which one row is always chosen, and that says why if it has none.
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
    void paintEvent(QPaintEvent *event) override;

private:
    QString emptyText_;
};
