// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/CreationPlan.h"
#include "Helper/Creation/Journal.h"
#include "Helper/Creation/Record.h"
#include "Helper/History.h"

#include <QString>
#include <QStringList>
#include <memory>

/// One creation in one or several folders, as the one step to undo that it becomes. Until it is complete the
/// journals stand for it, and the creation before stays the last one.
class UndoStep
{
public:
    /// In so many folders; for each of them endFolder() is called in the end. The journals use \a layer.
    explicit UndoStep(qsizetype folders = 1, FolderLayer &layer = FolderLayer::real());
    /// Stores what has not been stored.
    ~UndoStep();
    UndoStep(const UndoStep &) = delete;
    UndoStep &operator=(const UndoStep &) = delete;

    const QString &id() const { return id_; }
    const Creation::Records &records() const { return creation_.records; }

    /// Before the creation in a folder: writes the journal ahead. Null if it cannot be stored.
    Creation::Journal *beginFolder(const QString &label, const Creation::Plan &plan);
    /// What was made in the folder that was begun last; its place in records().
    std::size_t add(const Creation::Record &record);
    /// Nothing was made there.
    void discard();
    /// After the last folder everything is stored. What the user has to be told then: why the creation cannot
    /// be undone; empty if it can.
    QString endFolder();
    /// The same of all folders that are left, in which nothing will be created.
    QString endAll();

    /// What was made there has changed since. Empty, or why that cannot be stored.
    QString change(std::size_t place, const Creation::Record &record);

private:
    void setEarlierAside();
    void endEarlierAside();
    QString store();
    void removeJournals();

    FolderLayer &layer_;
    const QString id_;
    History::Creation creation_;
    qsizetype folders_;
    std::vector<std::shared_ptr<Creation::Journal>> journals_;
    bool isStored_ = false;
    /// Whether each folder has a journal, in which no note is known to be missing.
    bool isJournaled_ = true;
    /// The creation before is out of the history while this one goes on without a journal: were it killed,
    /// the one before would be taken for it.
    bool isEarlierAside_ = false;
    /// What journals cannot say.
    bool hasChanged_ = false;
    /// Why they are kept instead of a record: they cannot say what changed after the creation.
    QString reasonForJournals_;
};
