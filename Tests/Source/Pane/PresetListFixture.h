// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "PaneFixture.h"

#include <QAction>
#include <QMimeData>

/// A pane whose list shows A, B and C, with A selected.
class PresetListFixture : public PaneFixture
{
protected:
    void SetUp() override;
    void TearDown() override { expectNothingSavedSinceStoring(); }

    QStringList labels() const;
    QNBPresetRecordPtr record(int row) const;
    QAction &action(const char *name) const;
    /// The history, as its menu shows it.
    QString stepToTakeBack() const { return action("_undoAction").text(); }

    /// Writes a preset file with that name, from a preset with another label, and returns its path.
    QString presetFile(const QString &fileName);
    /// What of the files that are promised for \a row is written there.
    QStringList drag(int row, const QString &folder);

    /// What a drag of \a row brings.
    std::unique_ptr<QMimeData> dragOfRow(int row);
    /// What a drag brings whose index of a row was archived from \a index.
    std::unique_ptr<QMimeData> dragOfIndex(const QVariant &index);
    static std::unique_ptr<QMimeData> dragOfFiles(const QStringList &paths);

    DragOperations validate(const QMimeData &data, TableDropOperation operation = TableDropOperation::Above);
    bool accept(const QMimeData &data, int row, DragOperations mask = DragOperation::Move);

    const QString a = QStringLiteral("A");
    const QString b = QStringLiteral("B");
    const QString c = QStringLiteral("C");
};
