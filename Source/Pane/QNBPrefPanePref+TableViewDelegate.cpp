// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Source/Editing/QNBPresetListCommands.h"
#include "Source/Model/QNBPresetFile.h"
#include "Source/Pane/QNBPaneLog.h"
#include "Source/Pane/QNBPresetListNames.h"
#include "Toolkit/ArrayController.h"

namespace {

QByteArray archivedRowIndex(int row)
{
    const QVariant number = static_cast<qulonglong>(row);
    return KeyedArchiver::archivedDataWithRootObject(number).bytes.value_or(QByteArray());
}

/// None if \a data is no archive of an index below \a count.
std::optional<int> unarchivedRowIndex(const QByteArray &data, qsizetype count)
{
    const QVariant number = KeyedUnarchiver::unarchiveObject(data).value.value_or(QVariant());
    const bool isInteger = number.typeId() == QMetaType::LongLong || number.typeId() == QMetaType::ULongLong;
    // As unsigned, a negative number is larger than any count.
    const qulonglong index = number.toULongLong();
    if (!isInteger || index >= static_cast<qulonglong>(count))
        return std::nullopt;
    return static_cast<int>(index);
}

/// Row numbers mean something in the list that they were taken from only.
bool hasRowIndex(const Pasteboard &pasteboard)
{
    return pasteboard.hasDataForType(QNBRowIndexDragType) && pasteboard.isFromThisProcess();
}

} // namespace

QNBPresetRecordPtr QNBPrefPanePref::presetAtRow(int row) const
{
    return std::static_pointer_cast<QNBPresetRecord>(_ui_presetListController->arrangedObjects().value(row));
}

bool QNBPrefPanePref::tableViewWriteRowsWithIndexesToPasteboard(TableView &, const QList<int> &rows,
                                                                Pasteboard &pasteboard)
{
    pasteboard.declareTypes({PasteboardType::filesPromise, QNBRowIndexDragType});
    pasteboard.setPropertyListForType(QVariantList{QNBPresetFile::extension}, PasteboardType::filesPromise);
    pasteboard.setDataForType(archivedRowIndex(rows.value(0, ArrayController::noIndex)), QNBRowIndexDragType);
    return true;
}

DragOperations QNBPrefPanePref::tableViewValidateDrop(TableView &, const DraggingInfo &info, int,
                                                      TableDropOperation operation)
{
    if (operation == TableDropOperation::On)
        return DragOperation::None;
    const Pasteboard &pasteboard = info.draggingPasteboard();
    const bool isWelcome = hasRowIndex(pasteboard) || pasteboard.hasDataForType(PasteboardType::filenames);
    return isWelcome ? DragOperation::Move : DragOperation::None;
}

bool QNBPrefPanePref::tableViewAcceptDrop(TableView &, const DraggingInfo &info, int row, TableDropOperation)
{
    endEditing();
    const Pasteboard &pasteboard = info.draggingPasteboard();
    const DragOperations reordering = DragOperation::Move | DragOperation::Link;
    if (hasRowIndex(pasteboard) && (info.draggingSourceOperationMask() & reordering))
        return reorderPresets(pasteboard.dataForType(QNBRowIndexDragType), row);

    const QVariant paths = pasteboard.propertyListForType(PasteboardType::filenames);
    if (!paths.isValid())
        return false;
    importPresets(paths.toStringList(), row);
    return true;
}

bool QNBPrefPanePref::reorderPresets(const QByteArray &archivedIndex, int row)
{
    const qsizetype count = _ui_presetListController->arrangedObjects().size();
    const std::optional<int> from = unarchivedRowIndex(archivedIndex, count);
    if (!from || from == row || row < 0 || row > count)
        return false;
    const int to = *from < row ? row - 1 : row;
    auto move =
        std::make_unique<QNBMovePresetCommand>(*_ui_presetListController, *from, to, tr("Move Preset"));
    // Put back where it was, which nobody wants to take back.
    if (to == *from)
        move->redo();
    else
        _history.push(move.release());
    return true;
}

QStringList QNBPrefPanePref::tableViewNamesOfPromisedFilesDroppedAtDestination(TableView &,
                                                                               const QUrl &dropDestination,
                                                                               const QList<int> &rows)
{
    const QNBPresetRecordPtr preset = presetAtRow(rows.value(0, ArrayController::noIndex));
    if (!preset) {
        _lastExport = Result<>::failure(QStringLiteral("no such preset"));
        return {};
    }
    QString fileName = QNBPresetFile::fileNameForLabel(preset->label());
    _lastExport = dropDestination.isLocalFile()
                      ? QNBPresetFile::write(*preset, dropDestination.toLocalFile(), &fileName)
                      : Result<>::failure(QStringLiteral("its place is no folder of this machine"));
    if (!_lastExport)
        qCWarning(lcPane) << "the preset file" << fileName << "was not written:" << _lastExport.error;
    return {fileName};
}

QString QNBPrefPanePref::tableViewProbableNameOfPromisedFile(TableView &, int row)
{
    const QNBPresetRecordPtr preset = presetAtRow(row);
    return preset ? QNBPresetFile::fileNameForLabel(preset->label()) : QString();
}

void QNBPrefPanePref::tableViewWillDisplayCell(TableView &, ViewCell &cell, const TableColumn &column,
                                               int row)
{
    if (column.identifier == QNBDragHandleColumn)
        cell.image = imageNamed(QNBDragHandleImage);
    else
        _sharedLabels.mark(cell, row);
}

bool QNBPrefPanePref::tableViewValidateValue(TableView &, QVariant &value, const TableColumn &, int)
{
    // A preset without a name could not be told from the others; the old name stays.
    return !value.toString().trimmed().isEmpty();
}

void QNBPrefPanePref::tableViewSetObjectValue(TableView &, const QVariant &value, const TableColumn &column,
                                              int row)
{
    _history.push(new QNBSetPresetValueCommand(*_ui_presetListController, presetAtRow(row), column.key, value,
                                               tr("Rename Preset")));
}
