// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/ArrayController.h"

#include <algorithm>

ArrayController::Changes::Changes(ArrayController &controller)
    : controller_(controller)
    , selectedBefore_(controller.selectedObject())
{
    ++controller_.changesUnderWay_;
}

ArrayController::Changes::~Changes()
{
    if (--controller_.changesUnderWay_ == 0 && controller_.selectedObject() != selectedBefore_)
        Q_EMIT controller_.selectionChanged();
}

void ArrayController::setContent(const QList<Object> &objects)
{
    const Object before = selectedObject();
    Q_EMIT contentWillChange();
    objects_ = objects;
    selectionIndex_ = objects_.isEmpty() ? noIndex : 0;
    Q_EMIT contentChanged();
    if (selectedObject() != before)
        selectionDidChange();
}

void ArrayController::addObject(const Object &object)
{
    insertObject(object, static_cast<int>(objects_.size()));
}

void ArrayController::insertObject(const Object &object, int atArrangedObjectIndex)
{
    const int index = std::clamp(atArrangedObjectIndex, 0, static_cast<int>(objects_.size()));
    Q_EMIT objectWillBeInserted(index);
    objects_.insert(index, object);
    selectionIndex_ = index;
    Q_EMIT objectInserted(index);
    selectionDidChange();
}

void ArrayController::removeObject(const Object &object)
{
    removeObjectAt(static_cast<int>(objects_.indexOf(object)));
}

void ArrayController::remove()
{
    removeObjectAt(selectionIndex_);
}

void ArrayController::removeObjectAt(int index)
{
    if (index < 0 || index >= objects_.size())
        return;
    const bool wasSelected = index == selectionIndex_;
    Q_EMIT objectWillBeRemoved(index);
    objects_.removeAt(index);
    if (index < selectionIndex_ || selectionIndex_ == objects_.size())
        --selectionIndex_;
    Q_EMIT objectRemoved(index);
    if (wasSelected)
        selectionDidChange();
}

void ArrayController::setSelectionIndex(int index)
{
    const int wanted = index >= 0 && index < objects_.size() ? index : noIndex;
    if (wanted == selectionIndex_)
        return;
    selectionIndex_ = wanted;
    selectionDidChange();
}

QList<ArrayController::Object> ArrayController::selectedObjects() const
{
    const Object object = selectedObject();
    return object ? QList<Object>{object} : QList<Object>{};
}

void ArrayController::setValueForKey(const QVariant &value, const QString &key, int index)
{
    if (index < 0 || index >= objects_.size())
        return;
    objects_.at(index)->setValueForKey(value, key);
    Q_EMIT objectChanged(index, key);
}

ArrayController::Object ArrayController::selectedObject() const
{
    return selectionIndex_ == noIndex ? Object() : objects_.at(selectionIndex_);
}

void ArrayController::selectionDidChange()
{
    if (changesUnderWay_ == 0)
        Q_EMIT selectionChanged();
}
