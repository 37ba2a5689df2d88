// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Preferences/KeyValueCoding.h"

#include <QList>
#include <QObject>
#include <memory>

/// A list of records and which of them is selected. Every change of either goes through the controller, so
/// that all views of the list agree.
///
/// At most one record is selected. As long as there are records one is selected after every insertion (the
/// inserted one) and removal (the next, else the last); views may deselect.
class ArrayController final : public QObject
{
    Q_OBJECT

public:
    using Object = std::shared_ptr<KeyValueCoding>;
    static constexpr int noIndex = -1;

    /// Changes that belong together: while one of these lives no selection is told, and in the end only if
    /// another record is selected than in the beginning.
    class Changes
    {
    public:
        explicit Changes(ArrayController &controller);
        ~Changes();
        Q_DISABLE_COPY_MOVE(Changes)

    private:
        ArrayController &controller_;
        const Object selectedBefore_;
    };

    using QObject::QObject;

    /// The records in the order in which the user sees them.
    const QList<Object> &arrangedObjects() const { return objects_; }
    /// Replaces all records and selects the first.
    void setContent(const QList<Object> &objects);

    void addObject(const Object &object);
    /// \a index is limited to the list's bounds.
    void insertObject(const Object &object, int atArrangedObjectIndex);
    /// Nothing happens if the very object is not in the list.
    void removeObject(const Object &object);
    /// Removes the selected record, if any.
    void remove();

    int selectionIndex() const { return selectionIndex_; }
    /// An index outside the list selects nothing.
    void setSelectionIndex(int index);
    QList<Object> selectedObjects() const;

    /// Sets one attribute of the record at \a index and tells the views.
    void setValueForKey(const QVariant &value, const QString &key, int index);

Q_SIGNALS:
    void contentWillChange();
    void contentChanged();
    void objectWillBeInserted(int index);
    void objectInserted(int index);
    void objectWillBeRemoved(int index);
    void objectRemoved(int index);
    void objectChanged(int index, const QString &key);
    /// Another record, or none, is selected now; comes last, when list and selection agree.
    void selectionChanged();

private:
    Object selectedObject() const;
    void removeObjectAt(int index);
    void selectionDidChange();

    QList<Object> objects_;
    int selectionIndex_ = noIndex;
    int changesUnderWay_ = 0;
};
