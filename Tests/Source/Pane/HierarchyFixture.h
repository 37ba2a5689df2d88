// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "PaneFixture.h"

#include <utility>

QT_BEGIN_NAMESPACE
class QAction;
class QLineEdit;
QT_END_NAMESPACE

inline QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

/// A pane that shows one preset, with ways to talk of its items by their names.
class HierarchyFixture : public PaneFixture
{
protected:
    /// What the outline's model told since it was made.
    class RowSignals
    {
    public:
        explicit RowSignals(const OutlineView &outline);
        /// "+first" and "-first" for rows that came and went, "reset".
        QStringList take() { return std::exchange(told_, {}); }
        int changes() const { return changes_; }

    private:
        QStringList told_;
        int changes_ = 0;
        QObject context_;
    };

    void TearDown() override { expectNothingSavedSinceStoring(); }

    /// A tree of these paths; those that end in "/" are folders. Folders come before what is in them.
    static QNBHierarchyItemPtr treeOf(const QStringList &paths);
    /// Opens a pane with one preset that has this tree.
    void openTree(const QStringList &paths);

    QNBPresetRecordPtr shownPreset() const;
    QNBHierarchyItemPtr root() const { return shownPreset()->fileHierarchy(); }
    /// By names joined with "/".
    QNBHierarchyItemPtr item(const QString &path) const;
    int row(const QString &path) const { return outline().rowForItem(item(path)); }
    void select(const QString &path) const;
    QString selectedName() const;
    /// The names below that folder, of the root by default.
    QStringList names(const QString &path = {}) const;
    QVariantMap tree() const { return root()->toDictionaryWithUID(true); }
    /// Types a name over the one that is being edited.
    void typeName(const QString &name) const;
    QLineEdit *editor() const;

    /// The name of the step that would be undone; empty if there is none.
    QString lastStep() const;
    /// Undoes to \a before, step by step, and redoes all of it.
    void expectUndoAndRedo(const QVariantMap &before, int steps) const;
    QAction &action(const char *name) const;
};
